#include "support/TestCertificate.h"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace lumiwren::testing {

namespace {

template <auto Free>
struct Freeing {
  template <typename T>
  void operator()(T *object) const {
    Free(object);
  }
};
using Key = std::unique_ptr<EVP_PKEY, Freeing<&EVP_PKEY_free>>;
using Certificate = std::unique_ptr<X509, Freeing<&X509_free>>;

void require(bool condition, const char *what) {
  if (!condition) {
    throw std::runtime_error(std::string("cannot make a test certificate: ") + what);
  }
}

void addExtension(X509 *certificate, X509 *issuer, int id, const char *value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  const std::unique_ptr<X509_EXTENSION, Freeing<&X509_EXTENSION_free>> extension(
      X509V3_EXT_conf_nid(nullptr, &context, id, value));
  require(extension && X509_add_ext(certificate, extension.get(), -1) == 1, value);
}

/// Signed by itself when there is no issuer.
Certificate makeCertificate(const char *name, long serial, EVP_PKEY *key, X509 *issuer, EVP_PKEY *issuerKey) {
  constexpr long day = 24 * 60 * 60;
  Certificate certificate(X509_new());
  require(certificate != nullptr, "memory");
  X509_set_version(certificate.get(), X509_VERSION_3);
  ASN1_INTEGER_set(X509_get_serialNumber(certificate.get()), serial);
  X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -day);
  X509_gmtime_adj(X509_getm_notAfter(certificate.get()), day);
  X509_set_pubkey(certificate.get(), key);
  X509_NAME_add_entry_by_txt(X509_get_subject_name(certificate.get()), "CN", MBSTRING_ASC,
                             reinterpret_cast<const unsigned char *>(name), -1, -1, 0);
  X509 *const signer = issuer == nullptr ? certificate.get() : issuer;
  X509_set_issuer_name(certificate.get(), X509_get_subject_name(signer));
  if (issuer == nullptr) {
    addExtension(certificate.get(), signer, NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate.get(), signer, NID_key_usage, "critical,keyCertSign");
  } else {
    addExtension(certificate.get(), signer, NID_subject_alt_name, "DNS:localhost,IP:127.0.0.1");
  }
  require(X509_sign(certificate.get(), issuerKey, EVP_sha256()) > 0, "signature");
  return certificate;
}

void writeHashed(const std::filesystem::path &directory, X509 *certificate) {
  char name[16];
  std::snprintf(name, sizeof name, "%08lx.0", X509_subject_name_hash(certificate));
  const std::unique_ptr<std::FILE, Freeing<&std::fclose>> file(std::fopen((directory / name).c_str(), "w"));
  require(file && PEM_write_X509(file.get(), certificate) == 1, "file");
}

int chooseProtocol(SSL *, const unsigned char **chosen, unsigned char *chosenLength,
                   const unsigned char *offered, unsigned offeredLength, void *) {
  static constexpr unsigned char ours[] = "\x08http/1.1";
  return SSL_select_next_proto(const_cast<unsigned char **>(chosen), chosenLength, ours, sizeof ours - 1,
                               offered, offeredLength) == OPENSSL_NPN_NEGOTIATED
             ? SSL_TLSEXT_ERR_OK
             : SSL_TLSEXT_ERR_NOACK;
}

}  // namespace

void TestCertificate::FreeContext::operator()(ssl_ctx_st *context) const {
  SSL_CTX_free(context);
}

TestCertificate::TestCertificate() {
  auto pattern = (std::filesystem::temp_directory_path() / "test-authority-XXXXXX").string();
  require(mkdtemp(pattern.data()) != nullptr, "directory");
  directory_ = pattern;
  const Key authorityKey(EVP_EC_gen("P-256"));
  const Key key(EVP_EC_gen("P-256"));
  const auto authority =
      makeCertificate("Test Authority", 1, authorityKey.get(), nullptr, authorityKey.get());
  const auto certificate = makeCertificate("localhost", 2, key.get(), authority.get(), authorityKey.get());
  writeHashed(directory_, authority.get());
  context_.reset(SSL_CTX_new(TLS_server_method()));
  require(SSL_CTX_use_certificate(context_.get(), certificate.get()) == 1 &&
              SSL_CTX_use_PrivateKey(context_.get(), key.get()) == 1,
          "context");
  SSL_CTX_set_alpn_select_cb(context_.get(), &chooseProtocol, nullptr);
}

TestCertificate::~TestCertificate() {
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

}  // namespace lumiwren::testing
