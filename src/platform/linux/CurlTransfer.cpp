#include "platform/linux/CurlTransfer.h"

#include "platform/linux/CurlNetwork.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <utility>

namespace lumiwren {

namespace {

/// Enough to keep the network busy while the reader works, and little for one that has stopped reading.
constexpr std::size_t bufferLimit = 256UL * 1024;
constexpr long mostRedirects = 10;

CurlTransfer::TimePoint now() {
  return std::chrono::steady_clock::now();
}

}  // namespace

CurlTransfer::CurlTransfer(HTTPRequest request, std::shared_ptr<CurlNetwork> network)
    : request_(std::move(request)), network_(std::move(network)) {}

/// Waits until `take` has found what it came for, or the response has ended without it. `take` runs with the
/// lock held.
template <typename Take>
void CurlTransfer::wait(const std::stop_token &token, Take take) {
  const std::stop_callback onStop(token, [this] { cancel(); });
  bool isTaken = false;
  network_->driveUntil([&] {
    const std::lock_guard lock(mutex_);
    isTaken = !isCancelRequested_ && take();
    return isTaken || isCancelRequested_ || outcome_ != Outcome::Running;
  });
  if (isTaken) {
    return;
  }
  network_->settle();
  const std::lock_guard lock(mutex_);
  if (isCancelRequested_ || outcome_ == Outcome::Running || outcome_ == Outcome::Cancelled) {
    throw CancellationError();
  }
  if (outcome_ == Outcome::Failed) {
    throw TransportError(failure_);
  }
}

int CurlTransfer::waitForStatus(const std::stop_token &token) {
  int status = 0;
  wait(token, [&] {
    status = status_.value_or(0);
    return status_.has_value();
  });
  return status;
}

std::string_view CurlTransfer::read(const std::stop_token &token) {
  taken_.clear();
  bool wasPaused = false;
  wait(token, [&] {
    taken_.swap(incoming_);
    wasPaused = std::exchange(isPaused_, false);
    return !taken_.empty();
  });
  if (wasPaused) {
    network_->attendTo(shared_from_this());
  }
  return taken_;
}

void CurlTransfer::cancel() noexcept {
  {
    const std::lock_guard lock(mutex_);
    if (isCancelRequested_ || outcome_ != Outcome::Running) {
      return;
    }
    isCancelRequested_ = true;
  }
  network_->attendTo(shared_from_this());
  network_->notify();
}

bool CurlTransfer::isCancelRequested() const {
  const std::lock_guard lock(mutex_);
  return isCancelRequested_;
}

void CurlTransfer::start(CURLM *multi, const Setup &setup) {
  curl_ = &setup.curl;
  lastActivity_ = now();
  easy_ = curl_->easyInit();
  for (const auto &[name, value] : request_.headers) {
    std::string line;
    line.reserve(name.size() + 2 + value.reveal().size());  // One block, which is wiped below.
    line.append(name).append(": ").append(value.reveal());
    headers_ = curl_->slistAppend(headers_, line.c_str());
    wipe(line);
  }
  // Without this a large body would wait for the server's consent first.
  headers_ = curl_->slistAppend(headers_, "Expect:");

  const auto set = [this](CURLoption option, auto value) { curl_->easySetopt(easy_, option, value); };
  set(CURLOPT_URL, request_.url.c_str());
  if (followsRedirects()) {
    set(CURLOPT_PROTOCOLS_STR, "https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, mostRedirects);
  } else {
    set(CURLOPT_PROTOCOLS_STR, "http,https");
  }
  if (request_.method == "GET") {
    set(CURLOPT_HTTPGET, 1L);
  } else {
    set(CURLOPT_POST, 1L);
    set(CURLOPT_CUSTOMREQUEST, request_.method.c_str());
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.body.size()));
    set(CURLOPT_READFUNCTION, &onUpload);
    set(CURLOPT_READDATA, this);
    set(CURLOPT_SEEKFUNCTION, &onSeek);
    set(CURLOPT_SEEKDATA, this);
  }
  set(CURLOPT_HTTPHEADER, headers_);
  set(CURLOPT_HEADERFUNCTION, &onHeader);
  set(CURLOPT_HEADERDATA, this);
  set(CURLOPT_WRITEFUNCTION, &onBody);
  set(CURLOPT_WRITEDATA, this);
  set(CURLOPT_ERRORBUFFER, errorText_.data());
  set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  set(CURLOPT_NOPROXY, setup.noProxy.c_str());
  set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  set(CURLOPT_CAINFO, static_cast<const char *>(nullptr));
  set(CURLOPT_CAPATH, setup.certificateDirectory.c_str());
  set(CURLOPT_SHARE, setup.share);
  set(CURLOPT_NOSIGNAL, 1L);
  set(CURLOPT_QUICK_EXIT, 1L);  // A name look-up that hangs is left behind, not waited for.
  curl_->multiAddHandle(multi, easy_);
}

void CurlTransfer::resume() {
  if (easy_ != nullptr && std::exchange(awaitsReader_, false)) {
    lastActivity_ = now();
    curl_->easyPause(easy_, CURLPAUSE_CONT);
  }
}

void CurlTransfer::complete(CURLcode result) {
  // An answer that is no HTTP has no status; anything else that goes wrong before the first byte has a
  // reason.
  const bool isForeign =
      (result == CURLE_UNSUPPORTED_PROTOCOL && !followsRedirects()) || result == CURLE_WEIRD_SERVER_REPLY;
  curl_off_t sent = 0;
  curl_->easyGetinfo(easy_, CURLINFO_PRETRANSFER_TIME_T, &sent);
  if (isForeign && sent > 0) {
    const std::lock_guard lock(mutex_);
    status_ = status_.value_or(0);
    result = CURLE_OK;
  }
  if (result == CURLE_OK) {
    end(Outcome::Complete);
  } else {
    end(Outcome::Failed, describe(result));
  }
}

void CurlTransfer::end(Outcome outcome, std::string failure) {
  {
    const std::lock_guard lock(mutex_);
    if (outcome_ != Outcome::Running) {
      return;
    }
    outcome_ = outcome;
    failure_ = std::move(failure);
  }
  network_->notify();
}

void CurlTransfer::release(CURLM *multi) {
  if (easy_ == nullptr) {
    return;
  }
  curl_->multiRemoveHandle(multi, easy_);
  curl_->easyCleanup(std::exchange(easy_, nullptr));
  curl_->slistFreeAll(std::exchange(headers_, nullptr));
}

CurlTransfer::TimePoint CurlTransfer::silenceDeadline() const {
  return awaitsReader_ ? TimePoint::max() : lastActivity_ + request_.timeoutInterval;
}

std::size_t CurlTransfer::onHeader(char *bytes, std::size_t, std::size_t size, void *self) {
  auto &transfer = *static_cast<CurlTransfer *>(self);
  transfer.lastActivity_ = now();
  const std::string_view line(bytes, size);
  if (line != "\r\n" && line != "\n") {
    constexpr std::string_view location = "location:";
    transfer.namesLocation_ |=
        size > location.size() && strncasecmp(bytes, location.data(), location.size()) == 0;
    return size;
  }
  long status = 0;
  transfer.curl_->easyGetinfo(transfer.easy_, CURLINFO_RESPONSE_CODE, &status);
  const bool isRedirect = std::exchange(transfer.namesLocation_, false) && status >= 300 && status < 400;
  if (status < 200 || (isRedirect && transfer.followsRedirects())) {
    return size;  // An interim answer: the head is still to come.
  }
  {
    const std::lock_guard lock(transfer.mutex_);
    if (transfer.status_) {
      return size;  // The end of the trailers.
    }
    transfer.status_ = static_cast<int>(status);
  }
  transfer.network_->notify();
  return size;
}

std::size_t CurlTransfer::onBody(char *bytes, std::size_t, std::size_t size, void *self) {
  auto &transfer = *static_cast<CurlTransfer *>(self);
  transfer.lastActivity_ = now();
  {
    const std::lock_guard lock(transfer.mutex_);
    if (transfer.incoming_.size() >= bufferLimit) {
      transfer.isPaused_ = true;
      transfer.awaitsReader_ = true;
      return CURL_WRITEFUNC_PAUSE;
    }
    transfer.incoming_.append(bytes, size);
  }
  transfer.network_->notify();
  return size;
}

std::size_t CurlTransfer::onUpload(char *buffer, std::size_t, std::size_t size, void *self) {
  auto &transfer = *static_cast<CurlTransfer *>(self);
  transfer.lastActivity_ = now();
  const auto piece = std::string_view(transfer.request_.body).substr(transfer.uploaded_, size);
  std::memcpy(buffer, piece.data(), piece.size());
  transfer.uploaded_ += piece.size();
  return piece.size();
}

/// libcurl sends a request again when a kept connection turns out to be dead.
int CurlTransfer::onSeek(void *self, curl_off_t offset, int origin) {
  auto &transfer = *static_cast<CurlTransfer *>(self);
  if (origin != SEEK_SET || offset < 0 || std::cmp_greater(offset, transfer.request_.body.size())) {
    return CURL_SEEKFUNC_FAIL;
  }
  transfer.uploaded_ = static_cast<std::size_t>(offset);
  return CURL_SEEKFUNC_OK;
}

std::string CurlTransfer::describe(CURLcode result) const {
  if (result == CURLE_OPERATION_TIMEDOUT) {
    return "The request timed out.";
  }
  std::string detail = errorText_[0] != '\0' ? errorText_.data() : curl_->easyStrerror(result);
  switch (result) {
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return "The connection to the server was lost: " + detail;
    case CURLE_UNSUPPORTED_PROTOCOL:
      return followsRedirects() ? "The server redirects to an address that is not https." : detail;
    case CURLE_PEER_FAILED_VERIFICATION:
      return "The server's certificate is not trusted: " + detail;
    default:
      return detail;
  }
}

}  // namespace lumiwren
