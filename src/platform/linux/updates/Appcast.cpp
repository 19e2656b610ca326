#include "platform/linux/updates/Appcast.h"

#include "base/Unicode.h"
#include "platform/linux/updates/ReleaseNotes.h"
#include "platform/linux/updates/Version.h"

#include <expat.h>

#include <charconv>
#include <compare>
#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace lumiwren {
namespace {

constexpr std::size_t deepest = 32;
// Between a namespace and a name, as the parser is told to write them.
constexpr char separator = '\n';

constexpr std::string_view versionName = "http://www.andymatuschak.org/xml-namespaces/sparkle\nversion";
constexpr std::string_view shortVersionName =
    "http://www.andymatuschak.org/xml-namespaces/sparkle\nshortVersionString";
constexpr std::string_view minimumSystemName =
    "http://www.andymatuschak.org/xml-namespaces/sparkle\nminimumSystemVersion";
constexpr std::string_view channelName = "http://www.andymatuschak.org/xml-namespaces/sparkle\nchannel";
constexpr std::string_view signatureName = "http://www.andymatuschak.org/xml-namespaces/sparkle\nedSignature";
constexpr std::string_view systemName = "http://www.andymatuschak.org/xml-namespaces/sparkle\nos";

/// What an item says, before it is known whether it is offered.
struct Draft {
  std::string version;
  std::string shortVersion;
  std::string enclosureVersion;
  std::string enclosureShortVersion;
  std::string channel;
  std::string description;
  AppcastItem item;
};

std::string trimmed(std::string_view text) {
  return std::string(unicode::trimWhitespace(text));
}

std::uint64_t numberOf(std::string_view digits) {
  std::uint64_t number = 0;
  const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return failure == std::errc() && end == digits.data() + digits.size() ? number : 0;
}

class AppcastReader {
public:
  AppcastReader() : parser_(XML_ParserCreateNS(nullptr, separator), &XML_ParserFree) {
    if (!parser_) {
      throw std::bad_alloc();
    }
    XML_SetUserData(parser_.get(), this);
    XML_SetElementHandler(parser_.get(), &onStart, &onEnd);
    XML_SetCharacterDataHandler(parser_.get(), &onText);
    XML_SetStartDoctypeDeclHandler(parser_.get(), &onDocumentType);
  }

  std::vector<AppcastItem> read(std::string_view feed) {
    if (XML_Parse(parser_.get(), feed.data(), static_cast<int>(feed.size()), XML_TRUE) != XML_STATUS_OK) {
      const auto reason =
          refusal_.empty() ? std::string(XML_ErrorString(XML_GetErrorCode(parser_.get()))) : refusal_;
      throw AppcastError(reason + " in line " + std::to_string(XML_GetCurrentLineNumber(parser_.get())));
    }
    if (!isFeed_) {
      throw AppcastError("it is no RSS feed");
    }
    return std::move(items_);
  }

private:
  using Attributes = const XML_Char **;

  static void onStart(void *self, const XML_Char *name, Attributes attributes) {
    static_cast<AppcastReader *>(self)->start(name, attributes);
  }
  static void onEnd(void *self, const XML_Char * /*name*/) { static_cast<AppcastReader *>(self)->end(); }
  static void onText(void *self, const XML_Char *text, int length) {
    auto &reader = *static_cast<AppcastReader *>(self);
    if (reader.field_ != nullptr) {
      reader.field_->append(text, static_cast<std::size_t>(length));
    }
  }
  static void onDocumentType(void *self, const XML_Char *, const XML_Char *, const XML_Char *, int) {
    static_cast<AppcastReader *>(self)->refuse("a document type");
  }

  void refuse(std::string reason) {
    refusal_ = std::move(reason);
    XML_StopParser(parser_.get(), XML_FALSE);
  }

  void start(std::string_view name, Attributes attributes) {
    path_.emplace_back(name);
    if (path_.size() > deepest) {
      refuse("too deep a nesting");
      return;
    }
    field_ = nullptr;
    if (path_.size() == 1) {
      isFeed_ = name == "rss";
    } else if (path_.size() == 3 && isWithinFeed() && name == "item") {
      draft_.emplace();
    } else if (path_.size() == 4 && draft_) {
      if (name == "enclosure") {
        readEnclosure(attributes);
      } else {
        field_ = fieldFor(name);
      }
    }
  }

  void end() {
    field_ = nullptr;
    if (path_.size() == 3 && draft_) {
      complete(std::move(*draft_));
      draft_.reset();
    }
    path_.pop_back();
  }

  bool isWithinFeed() const { return isFeed_ && path_[1] == "channel"; }

  std::string *fieldFor(std::string_view name) {
    if (name == versionName) {
      return cleared(draft_->version);
    }
    if (name == shortVersionName) {
      return cleared(draft_->shortVersion);
    }
    if (name == minimumSystemName) {
      return cleared(draft_->item.minimumSystemVersion);
    }
    if (name == channelName) {
      return cleared(draft_->channel);
    }
    return name == "description" ? cleared(draft_->description) : nullptr;
  }

  static std::string *cleared(std::string &field) {
    field.clear();
    return &field;
  }

  void readEnclosure(Attributes attributes) {
    Draft read;
    std::string system;
    for (; *attributes != nullptr; attributes += 2) {
      const std::string_view name = attributes[0];
      const std::string_view value = attributes[1];
      if (name == "url") {
        read.item.url = value;
      } else if (name == "length") {
        read.item.length = numberOf(value);
      } else if (name == signatureName) {
        read.item.edSignature = trimmed(value);
      } else if (name == versionName) {
        read.enclosureVersion = value;
      } else if (name == shortVersionName) {
        read.enclosureShortVersion = value;
      } else if (name == systemName) {
        system = value;
      }
    }
    if (!draft_->item.url.empty() || (!system.empty() && system != "linux")) {
      return;
    }
    draft_->item.url = std::move(read.item.url);
    draft_->item.length = read.item.length;
    draft_->item.edSignature = std::move(read.item.edSignature);
    draft_->enclosureVersion = std::move(read.enclosureVersion);
    draft_->enclosureShortVersion = std::move(read.enclosureShortVersion);
  }

  void complete(Draft draft) {
    // The element has the last word over the attribute, and what users see over what only counts builds: that
    // is what the running program knows of itself.
    for (const auto *const version :
         {&draft.shortVersion, &draft.enclosureShortVersion, &draft.version, &draft.enclosureVersion}) {
      if (draft.item.version.empty()) {
        draft.item.version = trimmed(*version);
      }
    }
    if (draft.item.url.empty() || !isVersion(draft.item.version) || !trimmed(draft.channel).empty()) {
      return;
    }
    draft.item.minimumSystemVersion = trimmed(draft.item.minimumSystemVersion);
    draft.item.notes = plainReleaseNotes(draft.description);
    items_.push_back(std::move(draft.item));
  }

  const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
  std::string refusal_;
  std::vector<std::string> path_;
  bool isFeed_ = false;
  std::optional<Draft> draft_;    // the item that is being read
  std::string *field_ = nullptr;  // of the draft, which the text belongs to
  std::vector<AppcastItem> items_;
};

}  // namespace

std::vector<AppcastItem> parseAppcast(std::string_view feed) {
  if (feed.size() > longestAppcast) {
    throw AppcastError("it is too long");
  }
  return AppcastReader().read(feed);
}

std::optional<AppcastItem> newestUpdate(const std::vector<AppcastItem> &items,
                                        std::string_view runningVersion, std::string_view systemVersion) {
  const AppcastItem *newest = nullptr;
  for (const auto &item : items) {
    const auto &minimum = item.minimumSystemVersion;
    const bool isForThisSystem =
        minimum.empty() || (isVersion(minimum) && std::is_gteq(compareVersions(systemVersion, minimum)));
    if (isForThisSystem &&
        std::is_gt(compareVersions(item.version, newest != nullptr ? newest->version : runningVersion))) {
      newest = &item;
    }
  }
  return newest != nullptr ? std::optional(*newest) : std::nullopt;
}

}  // namespace lumiwren
