#include "platform/linux/LibsecretSecretStore.h"

#include "platform/linux/GLibWait.h"

// For the calls by path: one round trip each, where those by object load every property of each object first.
#define SECRET_API_SUBJECT_TO_CHANGE
#include <libsecret/secret.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace lumiwren {

namespace {

struct GStrvFree {
  void operator()(gchar **texts) const { g_strfreev(texts); }
};
using GStrv = std::unique_ptr<gchar *, GStrvFree>;

struct GFree {
  void operator()(gpointer memory) const { g_free(memory); }
};
using GText = std::unique_ptr<gchar, GFree>;

struct GVariantUnref {
  void operator()(GVariant *value) const { g_variant_unref(value); }
};
using GVariantRef = std::unique_ptr<GVariant, GVariantUnref>;

struct HashTableUnref {
  void operator()(GHashTable *table) const { g_hash_table_unref(table); }
};
using Attributes = std::unique_ptr<GHashTable, HashTableUnref>;

struct SecretValueUnref {
  void operator()(gpointer value) const { secret_value_unref(value); }
};
using SecretValueRef = std::unique_ptr<SecretValue, SecretValueUnref>;

/// Without matching by its name, so that items are found that other programs have stored for the user.
const SecretSchema &schema() {
  static const SecretSchema schema = [] {
    SecretSchema value{};
    value.name = "com.lumiwren.app";
    value.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
    value.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
    value.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
    return value;
  }();
  return schema;
}

Attributes attributesOf(std::string_view service, std::string_view account) {
  return Attributes(secret_attributes_build(&schema(), "service", std::string(service).c_str(), "account",
                                            std::string(account).c_str(), nullptr));
}

using PromptBegins = std::function<void()>;
/// What the operation on this thread does when the service asks the user.
thread_local const PromptBegins *promptBegins = nullptr;

void promptAsync(SecretService *service, SecretPrompt *prompt, const GVariantType *returnType,
                 GCancellable *cancellable, GAsyncReadyCallback callback, gpointer data) {
  if (promptBegins != nullptr) {
    (*promptBegins)();
  }
  SECRET_SERVICE_CLASS(g_type_class_peek(SECRET_TYPE_SERVICE))
      ->prompt_async(service, prompt, returnType, cancellable, callback, data);
}

/// The library's own class, which also tells when the user is asked.
GType serviceType() {
  static const GType type = [] {
    GTypeQuery base{};
    g_type_query(SECRET_TYPE_SERVICE, &base);
    GTypeInfo info{};
    info.class_size = static_cast<guint16>(base.class_size);
    info.instance_size = static_cast<guint16>(base.instance_size);
    info.class_init = [](gpointer aClass, gpointer) {
      SECRET_SERVICE_CLASS(aClass)->prompt_async = &promptAsync;
      // The library's own constructor replaces the connection by the process's shared one.
      G_OBJECT_CLASS(aClass)->constructor = G_OBJECT_CLASS(g_type_class_peek(G_TYPE_DBUS_PROXY))->constructor;
    };
    return g_type_register_static(SECRET_TYPE_SERVICE, "LumiwrenSecretService", &info, GTypeFlags{});
  }();
  return type;
}

}  // namespace

/// What stays open between operations.
class LibsecretSecretStore::Session {
public:
  Session() = default;
  Session(const Session &) = delete;
  Session &operator=(const Session &) = delete;
  ~Session() {
    service_.reset();
    connection_.reset();
    // Subscriptions are freed where their signals would have arrived.
    while (g_main_context_iteration(context_.get(), FALSE) != FALSE) {
    }
  }

  GMainContext *context() const { return context_.get(); }
  SecretService *service() const { return service_.get(); }

  bool connect(GLibWait &wait) {
    if (connection_ && g_dbus_connection_is_closed(connection_.get()) != FALSE) {
      disconnect();
      connection_.reset();
    }
    if (!connection_) {
      connection_ = connectToBus(wait);
    }
    if (connection_ && !service_) {
      service_ = openService(wait);
    }
    return service_ != nullptr;
  }

  void disconnect() { service_.reset(); }

  /// Where the last secret was that has been read, for the next time.
  std::string lastPath;

private:
  /// Not the process's shared connection: that one ends the process together with the bus, and once it is
  /// closed there is no other for as long as anybody holds it.
  static GObjectRef<GDBusConnection> connectToBus(GLibWait &wait) {
    const GText address(g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, wait.cancellable(), nullptr));
    if (!address) {
      return nullptr;
    }
    const auto result = wait.result([&](auto callback, auto data) {
      g_dbus_connection_new_for_address(
          address.get(),
          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
          nullptr, wait.cancellable(), callback, data);
    });
    return GObjectRef<GDBusConnection>(
        result ? g_dbus_connection_new_for_address_finish(result.get(), nullptr) : nullptr);
  }

  /// As secret_service_open() does, but on our connection.
  GObjectRef<SecretService> openService(GLibWait &wait) const {
    const auto result = wait.result([&](auto callback, auto data) {
      g_async_initable_new_async(serviceType(), G_PRIORITY_DEFAULT, wait.cancellable(), callback, data,
                                 "g-connection", connection_.get(),                     //
                                 "g-name", "org.freedesktop.secrets",                   //
                                 "g-object-path", "/org/freedesktop/secrets",           //
                                 "g-interface-name", "org.freedesktop.Secret.Service",  //
                                 "flags", SECRET_SERVICE_OPEN_SESSION, nullptr);
    });
    return GObjectRef<SecretService>(result ? secret_service_open_finish(result.get(), nullptr) : nullptr);
  }

  const GMainContextRef context_{g_main_context_new()};
  GObjectRef<GDBusConnection> connection_;
  GObjectRef<SecretService> service_;
};

/// One operation's calls. Each is empty or false when the service does not do it.
class LibsecretSecretStore::Operation {
public:
  struct Found {
    std::vector<std::string> unlocked;
    std::vector<std::string> locked;
  };

  Operation(Session &session, const Limits &limits)
      : session_(session), wait_(session.context(), limits.answers), promptBegins_([this, limits] {
          hasPrompted_ = true;
          wait_.extend(limits.prompt);
        }) {
    promptBegins = &promptBegins_;
  }
  Operation(const Operation &) = delete;
  Operation &operator=(const Operation &) = delete;
  ~Operation() { promptBegins = nullptr; }

  bool connect() { return session_.connect(wait_); }
  /// Whether it makes sense to ask again. Not after a prompt: a user is asked once.
  bool mayRepeat() const { return !wait_.isOver() && !hasPrompted_; }

  /// Never prompts.
  std::optional<Found> search(GHashTable *attributes) {
    const auto result = wait_.result([&](auto callback, auto data) {
      secret_service_search_for_dbus_paths(service(), &schema(), attributes, wait_.cancellable(), callback,
                                           data);
    });
    gchar **unlocked = nullptr;
    gchar **locked = nullptr;
    if (!result || secret_service_search_for_dbus_paths_finish(service(), result.get(), &unlocked, &locked,
                                                               nullptr) == FALSE) {
      return std::nullopt;
    }
    return Found{.unlocked = take(GStrv(unlocked)), .locked = take(GStrv(locked))};
  }

  /// Asks the user for as much as the service wants to. True when all are unlocked now.
  bool unlock(const std::vector<std::string> &paths) {
    std::vector<const gchar *> pointers;
    pointers.reserve(paths.size() + 1);
    for (const auto &path : paths) {
      pointers.push_back(path.c_str());
    }
    pointers.push_back(nullptr);
    const auto result = wait_.result([&](auto callback, auto data) {
      secret_service_unlock_dbus_paths(service(), pointers.data(), wait_.cancellable(), callback, data);
    });
    gchar **unlocked = nullptr;
    if (!result || secret_service_unlock_dbus_paths_finish(service(), result.get(), &unlocked, nullptr) < 0) {
      return false;
    }
    return take(GStrv(unlocked)).size() >= paths.size();
  }

  /// Asks for a secret; secretOf() waits for it.
  GLibWait::Slot askForSecret(const std::string &path) {
    // Not with the library's calls for paths (0.20.5): they lose the service's answer, and with it a copy of
    // the secret.
    const gchar *const paths[] = {path.c_str()};
    return wait_.start([&](auto callback, auto data) {
      g_dbus_proxy_call(G_DBUS_PROXY(service()), "GetSecrets",
                        g_variant_new("(@aoo)", g_variant_new_objv(paths, 1),
                                      secret_service_get_session_dbus_path(service())),
                        G_DBUS_CALL_FLAGS_NO_AUTO_START, G_MAXINT, wait_.cancellable(), callback, data);
    });
  }

  /// Outer: whether the service has answered; inner: whether there is such a secret.
  std::optional<std::optional<Secret>> secretOf(const GLibWait::Slot &question) {
    const auto result = wait_.finish(question);
    if (!result) {
      return std::nullopt;
    }
    const GVariantRef reply(g_dbus_proxy_call_finish(G_DBUS_PROXY(service()), result.get(), nullptr));
    if (!reply || g_variant_is_of_type(reply.get(), G_VARIANT_TYPE("(a{o(oayays)})")) == FALSE) {
      return std::nullopt;
    }
    const GVariantRef secrets(g_variant_get_child_value(reply.get(), 0));
    if (g_variant_n_children(secrets.get()) == 0) {
      return std::optional<Secret>();
    }
    const GVariantRef entry(g_variant_get_child_value(secrets.get(), 0));
    const GVariantRef encoded(g_variant_get_child_value(entry.get(), 1));
    const SecretValueRef value(secret_service_decode_dbus_secret(service(), encoded.get()));
    if (!value) {
      return std::nullopt;
    }
    gsize length = 0;
    const gchar *bytes = secret_value_get(value.get(), &length);
    return Secret::copyOf({bytes, length});
  }

  bool store(GHashTable *attributes, const std::string &label, const Secret &secret) {
    const auto bytes = secret.reveal();
    const SecretValueRef value(
        secret_value_new(bytes.data(), static_cast<gssize>(bytes.size()), "text/plain"));
    const auto result = wait_.result([&](auto callback, auto data) {
      secret_service_store(service(), &schema(), attributes, SECRET_COLLECTION_DEFAULT, label.c_str(),
                           value.get(), wait_.cancellable(), callback, data);
    });
    return result && secret_service_store_finish(service(), result.get(), nullptr) != FALSE;
  }

  bool remove(const std::string &path) {
    const auto result = wait_.result([&](auto callback, auto data) {
      secret_service_delete_item_dbus_path(service(), path.c_str(), wait_.cancellable(), callback, data);
    });
    return result && secret_service_delete_item_dbus_path_finish(service(), result.get(), nullptr) != FALSE;
  }

private:
  static std::vector<std::string> take(const GStrv &texts) {
    std::vector<std::string> taken;
    for (gchar **text = texts.get(); text != nullptr && *text != nullptr; ++text) {
      taken.emplace_back(*text);
    }
    return taken;
  }

  SecretService *service() const { return session_.service(); }

  Session &session_;
  GLibWait wait_;
  bool hasPrompted_ = false;
  const PromptBegins promptBegins_;
};

LibsecretSecretStore::LibsecretSecretStore(const Limits &limits) : limits_(limits) {}

LibsecretSecretStore::~LibsecretSecretStore() = default;

/// Runs use(operation), whose result is empty when the service has failed, with an open session. A service
/// that has been restarted knows nothing of a session that was kept, so that one failure is forgiven.
template <typename Result, typename Use>
std::optional<Result> LibsecretSecretStore::perform(Use use) {
  const std::unique_lock lock(mutex_, limits_.answers + limits_.prompt);
  if (!lock) {
    return std::nullopt;
  }
  if (!session_) {
    session_ = std::make_unique<Session>();
  }
  Operation operation(*session_, limits_);
  const bool wasOpen = session_->service() != nullptr;
  auto result = operation.connect() ? use(operation) : std::optional<Result>();
  if (!result && wasOpen && operation.mayRepeat()) {
    session_->disconnect();
    result = operation.connect() ? use(operation) : std::optional<Result>();
  }
  if (!result) {
    session_->disconnect();
  }
  return result;
}

std::optional<Secret> LibsecretSecretStore::copyMatching(std::string_view service, std::string_view account) {
  using Result = std::optional<Secret>;
  const auto attributes = attributesOf(service, account);
  return perform<Result>([&](Operation &operation) -> std::optional<Result> {
           // Most of the time it is where it was; then its answer comes along with the search's.
           std::string &lastPath = session_->lastPath;
           const auto early = lastPath.empty() ? nullptr : operation.askForSecret(lastPath);
           const auto found = operation.search(attributes.get());
           if (!found) {
             return std::nullopt;
           }
           if (!found->unlocked.empty()) {
             const std::string &path = found->unlocked.front();
             const bool isAsked = early && path == lastPath;
             lastPath = path;
             return operation.secretOf(isAsked ? early : operation.askForSecret(path));
           }
           if (found->locked.empty() || !operation.unlock({found->locked.front()})) {
             return Result();
           }
           return operation.secretOf(operation.askForSecret(found->locked.front()));
         })
      .value_or(std::nullopt);
}

SecretStatus LibsecretSecretStore::add(std::string_view service, std::string_view account,
                                       const Secret &secret) {
  const auto attributes = attributesOf(service, account);
  const auto label = "Lumiwren: " + std::string(account);
  return perform<SecretStatus>([&](Operation &operation) -> std::optional<SecretStatus> {
           return operation.store(attributes.get(), label, secret) ? std::optional(SecretStatus::Success)
                                                                   : std::nullopt;
         })
      .value_or(SecretStatus::Failure);
}

SecretStatus LibsecretSecretStore::remove(std::string_view service, std::string_view account) {
  const auto attributes = attributesOf(service, account);
  return perform<SecretStatus>([&](Operation &operation) -> std::optional<SecretStatus> {
           const auto found = operation.search(attributes.get());
           if (!found) {
             return std::nullopt;
           }
           if (found->unlocked.empty() && found->locked.empty()) {
             return SecretStatus::ItemNotFound;
           }
           if (!found->locked.empty() && !operation.unlock(found->locked)) {
             return SecretStatus::Failure;
           }
           for (const auto *paths : {&found->unlocked, &found->locked}) {
             for (const auto &path : *paths) {
               if (!operation.remove(path)) {
                 return std::nullopt;
               }
             }
           }
           return SecretStatus::Success;
         })
      .value_or(SecretStatus::Failure);
}

}  // namespace lumiwren
