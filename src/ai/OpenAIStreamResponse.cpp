#include "ai/OpenAIStreamResponse.h"

#include <simdjson.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <string>
#include <utility>

namespace lumiwren {

namespace {

/// Fills a chunk while the JSON text is being read, without a tree in between; a handler that returns false
/// ends the reading. Of a key that is there twice the last one counts.
class ChunkReader : public nlohmann::json_sax<nlohmann::json> {
public:
  OpenAIStreamResponse chunk;

  bool null() override {
    if (ignoredDepth_ > 0) {
      return true;
    }
    if (level_ == Level::Document || level_ == Level::Choices) {
      return false;
    }
    switch (field_) {
      case Field::Created:
        chunk.created.reset();
        break;
      case Field::Choices:
        chunk.choices.reset();
        break;
      case Field::Index:
        choice().index.reset();
        break;
      case Field::Delta:
        choice().delta.reset();
        break;
      default:
        if (auto *const field = textField()) {
          field->reset();
        }
    }
    return true;
  }

  bool string(string_t &value) override { return text(value); }

  bool text(std::string_view value) {
    if (isIgnoring()) {
      return true;
    }
    auto *const field = textField();
    if (field == nullptr) {
      return false;
    }
    field->emplace(value);
    return true;
  }

  bool number_integer(number_integer_t value) override { return number(value); }

  bool number_unsigned(number_unsigned_t value) override {
    return number(std::in_range<std::int64_t>(value) ? std::optional(static_cast<std::int64_t>(value))
                                                     : std::nullopt);
  }

  bool number_float(number_float_t value, const string_t &digits) override {
    // Digits alone arrive here when they exceed 64 bits, and rounding may have brought them back into range.
    constexpr double limit = 9223372036854775808.0;  // 2^63
    const bool isWhole = digits.find_first_of(".eE") != string_t::npos && std::trunc(value) == value &&
                         value >= -limit && value < limit;
    return number(isWhole ? std::optional(static_cast<std::int64_t>(value)) : std::nullopt);
  }

  bool boolean(bool) override { return isIgnoring(); }
  bool binary(binary_t &) override { return false; }

  bool start_object(std::size_t) override {
    if (isIgnoring()) {
      ++ignoredDepth_;
      return true;
    }
    if (level_ == Level::Document) {
      level_ = Level::Chunk;
      return true;
    }
    if (level_ == Level::Choices) {
      chunk.choices->emplace_back();
      level_ = Level::Choice;
      return true;
    }
    if (field_ == Field::Delta) {
      choice().delta.emplace();
      level_ = Level::Delta;
      return true;
    }
    return false;
  }

  bool key(string_t &name) override { return member(name); }

  bool member(std::string_view name) {
    if (ignoredDepth_ == 0) {
      field_ = fieldOf(level_, name);
    }
    return true;
  }

  bool end_object() override {
    if (ignoredDepth_ > 0) {
      --ignoredDepth_;
    } else {
      level_ = static_cast<Level>(static_cast<int>(level_) - 1);
    }
    return true;
  }

  bool start_array(std::size_t) override {
    if (isIgnoring()) {
      ++ignoredDepth_;
      return true;
    }
    if (level_ != Level::Chunk || field_ != Field::Choices) {
      return false;
    }
    chunk.choices.emplace();
    level_ = Level::Choices;
    return true;
  }

  bool end_array() override { return end_object(); }

  bool parse_error(std::size_t, const std::string &, const nlohmann::json::exception &) override {
    return false;
  }

  /// Whether what comes next belongs to an unknown key, and is of no use.
  bool isIgnoring() const { return ignoredDepth_ > 0 || isUnknownMember(); }

private:
  /// Each is found directly inside the one before it.
  enum class Level { Document, Chunk, Choices, Choice, Delta };
  enum class Field {
    Unknown,
    ID,
    Object,
    Created,
    Model,
    Choices,
    Index,
    Delta,
    FinishReason,
    Role,
    Content
  };

  static Field fieldOf(Level level, std::string_view name) {
    switch (level) {
      case Level::Chunk:
        return name == "choices"   ? Field::Choices
               : name == "id"      ? Field::ID
               : name == "object"  ? Field::Object
               : name == "created" ? Field::Created
               : name == "model"   ? Field::Model
                                   : Field::Unknown;
      case Level::Choice:
        return name == "delta"           ? Field::Delta
               : name == "index"         ? Field::Index
               : name == "finish_reason" ? Field::FinishReason
                                         : Field::Unknown;
      case Level::Delta:
        return name == "content" ? Field::Content : name == "role" ? Field::Role : Field::Unknown;
      default:
        return Field::Unknown;
    }
  }

  bool isUnknownMember() const {
    return level_ != Level::Document && level_ != Level::Choices && field_ == Field::Unknown;
  }

  OpenAIStreamResponse::StreamChoice &choice() { return chunk.choices->back(); }

  /// Where the current key's text belongs; null when it holds no text, or there is no key.
  std::optional<std::string> *textField() {
    if (level_ == Level::Document || level_ == Level::Choices) {
      return nullptr;
    }
    switch (field_) {
      case Field::ID:
        return &chunk.id;
      case Field::Object:
        return &chunk.object;
      case Field::Model:
        return &chunk.model;
      case Field::FinishReason:
        return &choice().finishReason;
      case Field::Role:
        return &choice().delta->role;
      case Field::Content:
        return &choice().delta->content;
      default:
        return nullptr;
    }
  }

  /// `value` is empty for a number that is no signed 64-bit integer.
  bool number(std::optional<std::int64_t> value) {
    if (isIgnoring()) {
      return true;
    }
    if (level_ == Level::Document || level_ == Level::Choices || !value) {
      return false;
    }
    if (field_ == Field::Created) {
      chunk.created = value;
      return true;
    }
    if (field_ == Field::Index) {
      choice().index = value;
      return true;
    }
    return false;
  }

  Level level_ = Level::Document;
  Field field_ = Field::Unknown;
  std::size_t ignoredDepth_ = 0;  // how deep inside the value of an unknown key
};

using Element = simdjson::dom::element;
using ElementType = simdjson::dom::element_type;

/// Tells the reader of a value as a parser would that comes upon it. False when the reader ends it.
bool tell(ChunkReader &reader, const Element &value);

bool tellArray(ChunkReader &reader, const simdjson::dom::array &array) {
  return reader.start_array(0) &&
         std::all_of(array.begin(), array.end(), [&](const Element &value) { return tell(reader, value); }) &&
         reader.end_array();
}

bool tellObject(ChunkReader &reader, const simdjson::dom::object &object) {
  return reader.start_object(0) &&
         std::all_of(object.begin(), object.end(),
                     [&](const simdjson::dom::key_value_pair &each) {
                       return reader.member(each.key) && tell(reader, each.value);
                     }) &&
         reader.end_object();
}

bool tell(ChunkReader &reader, const Element &value) {
  if (reader.isIgnoring()) {
    return true;
  }
  switch (value.type()) {
    case ElementType::ARRAY:
      return tellArray(reader, simdjson::dom::array(value));
    case ElementType::OBJECT:
      return tellObject(reader, simdjson::dom::object(value));
    case ElementType::INT64:
      return reader.number_integer(std::int64_t(value));
    case ElementType::UINT64:
      return reader.number_unsigned(std::uint64_t(value));
    case ElementType::DOUBLE:
      return reader.number_float(double(value), ".");  // Only a number that says so is one.
    case ElementType::STRING:
      return reader.text(std::string_view(value));
    case ElementType::BOOL:
      return reader.boolean(bool(value));
    case ElementType::NULL_VALUE:
      return reader.null();
  }
  return false;
}

}  // namespace

std::optional<OpenAIStreamResponse> OpenAIStreamResponse::decode(std::string_view json) {
  ChunkReader reader;
  thread_local simdjson::dom::parser parser;  // keeps its memory from one chunk to the next
  Element document;
  // A quarter of the other parser's time for what is nearly always sent. It does not take numbers beyond 64
  // bits and very deep nesting, which may stand in what is ignored.
  const bool isTaken = parser.parse(json.data(), json.size()).get(document) == simdjson::SUCCESS;
  if (!(isTaken ? tell(reader, document) : nlohmann::json::sax_parse(json, &reader))) {
    return std::nullopt;
  }
  return std::move(reader.chunk);
}

}  // namespace lumiwren
