#include "actions/CustomActionJSON.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <limits>
#include <optional>

namespace lumiwren {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;

CustomAction example() {
  return {.id = *UUID::parse("0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9"),
          .name = "Café",
          .hotkey = {.keyCode = 17, .modifiers = 0xA0000},
          .prompt = "One\n\"two\"\t{text}",
          .inputType = CustomAction::InputType::ScreenCapture,
          .isDefault = false};
}

json exampleJSON() {
  return {{"id", "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9"},
          {"name", "Café"},
          {"hotkey", {{"keyCode", 17}, {"modifiers", 0xA0000}}},
          {"prompt", "One\n\"two\"\t{text}"},
          {"inputType", "Screen Capture (OCR)"},
          {"isDefault", false}};
}

/// The stored form of one action, with the text of one value in place of what is there.
std::string withValue(const std::string &pointer, const std::string &text) {
  auto object = exampleJSON();
  object[json::json_pointer(pointer)] = "PLACEHOLDER";
  auto list = "[" + object.dump() + "]";
  const std::string placeholder = "\"PLACEHOLDER\"";
  return list.replace(list.find(placeholder), placeholder.size(), text);
}

std::string without(const std::string &object, const std::string &key) {
  auto action = exampleJSON();
  action[json::json_pointer(object)].erase(key);
  return json::array({action}).dump();
}

/// Why the text cannot be read; empty when it can.
std::optional<std::string> refusal(const std::string &text) {
  try {
    static_cast<void>(decodeCustomActions(text));
    return std::nullopt;
  } catch (const CustomActionJSONError &error) {
    return error.what();
  }
}

std::optional<std::uint64_t> decodedModifiers(const std::string &number) {
  const auto text = withValue("/hotkey/modifiers", number);
  return refusal(text) ? std::nullopt : std::optional(decodeCustomActions(text).at(0).hotkey.modifiers);
}

std::optional<std::uint16_t> decodedKeyCode(const std::string &number) {
  const auto text = withValue("/hotkey/keyCode", number);
  return refusal(text) ? std::nullopt : std::optional(decodeCustomActions(text).at(0).hotkey.keyCode);
}

TEST(CustomActionJSONTest, WritesOneCompactArrayWithTheSixKeys) {
  EXPECT_EQ(encodeCustomActions({}), "[]");
  EXPECT_EQ(encodeCustomActions({example()}),
            "[{\"id\":\"0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9\",\"name\":\"Café\","
            "\"hotkey\":{\"keyCode\":17,\"modifiers\":655360},\"prompt\":\"One\\n\\\"two\\\"\\t{text}\","
            "\"inputType\":\"Screen Capture (OCR)\",\"isDefault\":false}]");
}

TEST(CustomActionJSONTest, ReadsBackWhatItHasWritten) {
  auto extreme = example();
  extreme.hotkey = {.keyCode = 0xFFFF, .modifiers = std::numeric_limits<std::uint64_t>::max()};
  extreme.name = std::string("\0\x1F\x7F", 3) + "\u2028 \U0001F426 </script>";
  extreme.prompt.clear();
  const std::vector<CustomAction> actions{CustomAction::defaultExplainText(), example(), extreme,
                                          CustomAction::defaultExplainScreen(), example()};
  EXPECT_EQ(decodeCustomActions(encodeCustomActions(actions)), actions);
}

TEST(CustomActionJSONTest, RefusesToWriteATextThatIsNoValidUTF8) {
  auto action = example();
  action.name = "caf\xE9";
  EXPECT_THROW(static_cast<void>(encodeCustomActions({action})), CustomActionJSONError);
  action = example();
  action.prompt = "\xED\xA0\x80";
  EXPECT_THROW(static_cast<void>(encodeCustomActions({action})), CustomActionJSONError);
}

TEST(CustomActionJSONTest, ReadsTheExample) {
  EXPECT_EQ(decodeCustomActions(json::array({exampleJSON()}).dump(2)), std::vector{example()});
}

TEST(CustomActionJSONTest, ReadsAnEmptyList) {
  EXPECT_TRUE(decodeCustomActions("[]").empty());
  EXPECT_TRUE(decodeCustomActions(" [ \n ] ").empty());
}

TEST(CustomActionJSONTest, ReadsKeysInAnyOrderAndIgnoresUnknownOnes) {
  const std::string text = R"json([{
    "isDefault": false, "extra": {"id": 1, "deep": [{"hotkey": null}]}, "prompt": "One\n\"two\"\t{text}",
    "hotkey": {"modifiers": 655360, "note": "x", "keyCode": 17}, "inputType": "Screen Capture (OCR)",
    "name": "Café", "id": "0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9"}])json";
  EXPECT_EQ(decodeCustomActions(text), std::vector{example()});
}

TEST(CustomActionJSONTest, ReadsAnUnknownKeyNestedVeryDeeply) {
  constexpr std::size_t depth = 200'000;
  EXPECT_EQ(decodeCustomActions(withValue("/extra", std::string(depth, '[') + std::string(depth, ']'))),
            std::vector{example()});
}

TEST(CustomActionJSONTest, OfARepeatedKeyTheFirstCounts) {
  auto text = encodeCustomActions({example()});
  text.insert(text.size() - 2, R"(,"name":7,"hotkey":null,"name":"Third")");
  EXPECT_EQ(decodeCustomActions(text), std::vector{example()});
  EXPECT_EQ(decodedKeyCode(R"(17,"keyCode":18)"), 17);
}

TEST(CustomActionJSONTest, ReadsIdentifiersInEitherCase) {
  EXPECT_EQ(decodeCustomActions(withValue("/id", "\"0a1b2C3D-4e5f-6071-8293-a4b5c6d7e8f9\"")).at(0).id,
            example().id);
}

TEST(CustomActionJSONTest, RefusesWhatIsNoIdentifier) {
  for (const auto *text :
       {R"("")", R"("0A1B2C3D4E5F60718293A4B5C6D7E8F9")", R"("0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F")",
        R"("{0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9}")", R"("0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8FG")",
        R"(" 0A1B2C3D-4E5F-6071-8293-A4B5C6D7E8F9")", "7", "null", "[]"}) {
    EXPECT_TRUE(refusal(withValue("/id", text))) << text;
  }
}

TEST(CustomActionJSONTest, ReadsEscapes) {
  const auto name = [](const char *text) { return decodeCustomActions(withValue("/name", text)).at(0).name; };
  EXPECT_EQ(name(R"("Caf\u00e9 \/ \"\\\b\f\n\r\t")"), "Café / \"\\\b\f\n\r\t");
  EXPECT_EQ(name(R"("\ud83d\udc26")"), "\U0001F426");
  EXPECT_EQ(name(R"("a\u0000b")"), std::string("a\0b", 3));
}

TEST(CustomActionJSONTest, RefusesHalfASurrogatePair) {
  for (const auto *text : {R"("\ud83d")", R"("\udc26")", R"("\ud83d\u0041")", R"("\ud83d\ud83d")"}) {
    EXPECT_TRUE(refusal(withValue("/name", text))) << text;
  }
}

TEST(CustomActionJSONTest, RefusesInvalidUTF8) {
  for (const auto *text : {"\"\xFF\"", "\"caf\xE9\"", "\"\xC0\x80\"", "\"\xED\xA0\x80\"",
                           "\"\xF4\x90\x80\x80\"", "\"\xE2\x82\"", "\"\x80\""}) {
    EXPECT_TRUE(refusal(withValue("/name", text))) << text;
    EXPECT_TRUE(refusal(withValue("/extra", text))) << text;
  }
}

TEST(CustomActionJSONTest, ReadsWholeNumbersHoweverTheyAreWritten) {
  EXPECT_EQ(decodedKeyCode("17.0"), 17);
  EXPECT_EQ(decodedKeyCode("1e0"), 1);
  EXPECT_EQ(decodedKeyCode("1.7e1"), 17);
  EXPECT_EQ(decodedKeyCode("1700E-2"), 17);
  EXPECT_EQ(decodedKeyCode("0"), 0);
  EXPECT_EQ(decodedKeyCode("-0"), 0);
  EXPECT_EQ(decodedKeyCode("-0.0"), 0);
  EXPECT_EQ(decodedKeyCode("65535"), 65535);
  EXPECT_EQ(decodedKeyCode("6.5535e4"), 65535);
  EXPECT_EQ(decodedModifiers("18446744073709551615"), 18446744073709551615U);
  EXPECT_EQ(decodedModifiers("9223372036854775808"), 9223372036854775808U);
  EXPECT_EQ(decodedModifiers("1e19"), 10000000000000000000U);
  EXPECT_EQ(decodedModifiers("655360.0"), 655360U);
}

TEST(CustomActionJSONTest, RefusesNumbersThatAreNotWholeOrOutOfRange) {
  for (const auto *text :
       {"-1", "-1.0", "65536", "65536.0", "1e5", "1.5", "17.000001", "1e-1", "18446744073709551617", "1e400",
        "-1e400", "\"17\"", "true", "null", "{}", "[17]"}) {
    EXPECT_FALSE(decodedKeyCode(text)) << text;
  }
  for (const auto *text : {"-1", "-9223372036854775808", "0.5", "18446744073709551616",
                           "18446744073709551616.0", "1e20", "1e400", "\"0\"", "false", "null"}) {
    EXPECT_FALSE(decodedModifiers(text)) << text;
  }
}

TEST(CustomActionJSONTest, RefusesNumbersThatAreNoJSON) {
  for (const auto *text : {"017", "+17", "0x11", "17.", ".5", "NaN", "Infinity", "1e"}) {
    EXPECT_FALSE(decodedKeyCode(text)) << text;
  }
}

TEST(CustomActionJSONTest, RefusesAMissingKeyAndNamesIt) {
  for (const auto *key : {"id", "name", "hotkey", "prompt", "inputType", "isDefault"}) {
    EXPECT_EQ(refusal(without("", key)), std::string("actions[0].") + key + " is missing");
  }
  for (const auto *key : {"keyCode", "modifiers"}) {
    EXPECT_EQ(refusal(without("/hotkey", key)), std::string("actions[0].hotkey.") + key + " is missing");
  }
}

TEST(CustomActionJSONTest, RefusesNullAndValuesOfTheWrongType) {
  for (const auto *key : {"/id", "/name", "/prompt", "/inputType"}) {
    for (const auto *text : {"null", "1", "true", "[]", "{}", "[\"a\"]"}) {
      EXPECT_TRUE(refusal(withValue(key, text))) << key << text;
    }
  }
  for (const auto *text : {"null", "1", "true", "[]", "\"E\"", "[14,0]"}) {
    EXPECT_TRUE(refusal(withValue("/hotkey", text))) << text;
  }
  for (const auto *text : {"null", "0", "1", "\"true\"", "[]", "{}"}) {
    EXPECT_TRUE(refusal(withValue("/isDefault", text))) << text;
  }
}

TEST(CustomActionJSONTest, RefusesTheCaseNamesOfInputTypes) {
  for (const auto *text : {R"("textSelection")", R"("screenCapture")", R"("Text selection")", R"("")"}) {
    EXPECT_TRUE(refusal(withValue("/inputType", text))) << text;
  }
}

TEST(CustomActionJSONTest, OneFaultInOneActionFailsTheList) {
  auto bad = exampleJSON();
  bad.erase("isDefault");
  EXPECT_EQ(refusal(json::array({exampleJSON(), exampleJSON(), bad}).dump()),
            "actions[2].isDefault is missing");
  EXPECT_TRUE(refusal(json::array({exampleJSON(), nullptr}).dump()));
  EXPECT_TRUE(refusal(json::array({exampleJSON(), json::array()}).dump()));
}

TEST(CustomActionJSONTest, RefusesWhatIsNoArray) {
  for (const auto *text : {"", " ", "null", "{}", "7", "\"[]\"", "[", "[]]", "[] x", "[,]", "[{}", "[1 2]",
                           "[\n//\n]", "['a']", "[nul]"}) {
    EXPECT_TRUE(refusal(text)) << text;
  }
  EXPECT_TRUE(refusal(exampleJSON().dump()));
  EXPECT_TRUE(refusal(std::string("\0", 1)));
}

TEST(CustomActionJSONTest, ErrorsAreOneLineWithNothingOfTheContent) {
  const std::string secret = "S3CRET\\nline";
  for (const auto &text :
       {withValue("/id", "\"" + secret + "\""), withValue("/inputType", "\"" + secret + "\""),
        withValue("/hotkey", "\"" + secret + "\""), withValue("/name", "\"S3CRET\n\""),
        withValue("/name", "\"S3CRET\xFF\"")}) {
    const auto error = refusal(text);
    ASSERT_TRUE(error) << text;
    EXPECT_THAT(*error, ::testing::Not(HasSubstr("S3CRET")));
    EXPECT_EQ(error->find('\n'), std::string::npos);
  }
}

TEST(CustomActionJSONTest, ErrorsOfSyntaxNameTheByte) {
  EXPECT_EQ(refusal("[}"), "not valid JSON at byte 2");
}

}  // namespace
}  // namespace lumiwren
