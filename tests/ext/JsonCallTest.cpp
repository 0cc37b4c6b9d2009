// Calls by name: JSON to what travels, and what travels to JSON, each against literals.
#include <cstring>
#include <ctime>

#include "ext/AskedCard.h"
#include "support/FailingMemory.h"

namespace VELTRO::KELVO::Test {
namespace {

using namespace std::string_literals;

std::string Called(std::int32_t card, const std::string& arguments) {
  char text[1000] = "";
  std::uint32_t length = 0;
  const std::string outcome =
      Outcome(vlCallJson(card, "Method", arguments.c_str(), text, sizeof text, &length));
  return outcome == "0" ? std::string(text, length) : outcome;
}

TEST(JsonCalls, SendTheirArguments) {
  AskedCard card;
  const std::pair<const char*, std::string> rows[] = {
      {"[]", "\x90"},
      {"[null, true, -5, 200, 18446744073709551615]",
       "\x95\xC0\xC3\xFB\xCC\xC8\xCF\xFF\xFF\xFF\xFF\xFF\xFF\xFF\xFF"},
      {"[2.0]", "\x91\xCB\x40\0\0\0\0\0\0\0"s},
      {"[1e1]", "\x91\xCB\x40\x24\0\0\0\0\0\0"s},
      {R"(["a\u00e9", [1]])", "\x92\xA3\x61\xC3\xA9\x91\1"},
      {R"([{"b": 1, "a": 2}])", "\x91\x82\xA1\x62\1\xA1\x61\2"},
      {R"([{"base64": "AQL/"}])", "\x91\xC4\3\1\2\xFF"},
      {R"([{"base64": "AQ=="}])", "\x91\xC4\1\1"},
      {R"([{"base64": ""}])", "\x91\xC4\0"s},
      {R"([{"base64": "AQI=", "more": 1}])",
       "\x91\x82\xA6"
       "base64\xA4"
       "AQI=\xA4more\1"},
      {R"([{"number": "-inf"}])", "\x91\xCB\xFF\xF0\0\0\0\0\0\0"s},
      {R"([{"map": [[1, 2], [[3], 4]]}])", "\x91\x82\1\2\x91\3\4"},
      {R"([{"text": "/w=="}])", "\x91\xA1\xFF"},
      {R"([{"extension": [5, "AQI="]}])", "\x91\xC7\2\5\1\2"},
  };
  for (const auto& [arguments, packed] : rows) {
    EXPECT_EQ(Called(card.Handle, arguments), "null") << arguments;
    // A length of 2 has a form of its own.
    const bool isExtension = std::strstr(arguments, "extension") != nullptr;
    EXPECT_EQ(card.Sent, isExtension ? "\x91\xD5\5\1\2" : packed) << arguments;
    EXPECT_TRUE(card.Asked.starts_with("Method[")) << card.Asked;
  }
}

TEST(JsonCalls, TellTheirResults) {
  AskedCard card;
  const std::pair<std::string, const char*> rows[] = {
      {"\xC2", "false"},
      {"\xFB", "-5"},
      {"\xCB\x40\0\0\0\0\0\0\0"s, "2.0"},
      {"\xCB\x7F\xF0\0\0\0\0\0\0"s, R"({"number":"inf"})"},
      {"\xCB\x7F\xF8\0\0\0\0\0\0"s, R"({"number":"nan"})"},
      {"\xA2\x61\n", R"("a\n")"},
      {"\xA1\xFF", R"({"text":"/w=="})"},
      {"\xC4\3\1\2\xFF", R"({"base64":"AQL/"})"},
      {"\xC4\2\1\2", R"({"base64":"AQI="})"},
      {"\x92\1\x91\2", "[1,[2]]"},
      {"\x82\xA1\x62\1\xA1\x61\2", R"({"b":1,"a":2})"},
      {"\x82\1\2\xA1\x61\3", R"({"map":[[1,2],["a",3]]})"},
      {"\x82\xA1\x61\2\xA1\x61\3", R"({"map":[["a",2],["a",3]]})"},
      {"\x81\xA3map\1", R"({"map":[["map",1]]})"},
      {"\xD5\xFB\1\2", R"({"extension":[-5,"AQI="]})"},
  };
  for (const auto& [answer, json] : rows) {
    card.Answer = answer;
    EXPECT_EQ(Called(card.Handle, "[]"), json);
  }
}

TEST(JsonCalls, RefuseWhatIsNone) {
  AskedCard card;
  const std::pair<std::string, const char*> rows[] = {
      {"", "The arguments are no JSON array."},
      {"{}", "The arguments are no JSON array."},
      {"[1,]", "The arguments are no JSON array."},
      {R"([{"base64": "A"}])", "A text in base64 is none."},
      {R"([{"base64": "AR=="}])", "A text in base64 is none."},
      {R"([{"base64": "A*=="}])", "A text in base64 is none."},
      {R"([{"base64": 1}])", "An object with the key 'base64' is not of its kind."},
      {R"([{"number": "1"}])", "An object with the key 'number' is not of its kind."},
      {R"([{"map": [[1]]}])", "An object with the key 'map' is not of its kind."},
      {R"([{"extension": [128, ""]}])", "An object with the key 'extension' is not of its kind."},
      {R"([{"extension": [18446744073709551615, ""]}])",
       "An object with the key 'extension' is not of its kind."},
      {R"([{"extension": [-129, ""]}])", "An object with the key 'extension' is not of its kind."},
      {R"([{"a": {"a": 1}, "b": {"a": 2}, "a": 3}])", "An object has the key 'a' twice."},
      {std::string(300, '[') + std::string(300, ']'), "The arguments are nested too deeply."},
  };
  for (const auto& [arguments, text] : rows) EXPECT_EQ(Called(card.Handle, arguments), text);
  EXPECT_FALSE(card.Asked.starts_with("Method")) << card.Asked;
  char text[4] = "";
  std::uint32_t length = 0;
  card.Answer = "\xA2\x61\x62";
  EXPECT_FAILS(vlCallJson(card.Handle, "M", "[]", text, 4, &length), "Buffer is too small.");
}

TEST(JsonCalls, TakeTimeThatGrowsWithTheirText) {
  constexpr std::uint32_t Members = 100000;
  AskedCard card;
  msgpack::sbuffer answer;
  msgpack::packer packer(answer);
  packer.pack_map(Members);
  std::string object = "{";
  for (std::uint32_t i = 0; i < Members; ++i) {
    packer.pack(std::to_string(i)).pack(i);
    object.append(i > 0 ? "," : "").append("\"" + std::to_string(i) + "\":" + std::to_string(i));
  }
  object += "}";
  card.Answer.assign(answer.data(), answer.size());
  std::string text(object.size() + 2, 'x');
  std::uint32_t length = 0;
  const std::clock_t begin = std::clock();  // of the processor, whatever else it does
  EXPECT_OK(vlCallJson(card.Handle, "Method", ("[" + object + "]").c_str(), text.data(),
                       static_cast<std::uint32_t>(text.size()), &length));
  EXPECT_LT(std::clock() - begin, (Sanitized ? 60 : 10) * CLOCKS_PER_SEC);
  EXPECT_TRUE(card.Sent == "\x91" + card.Answer);
  text.resize(length);
  EXPECT_TRUE(text == object);
}

TEST(JsonCalls, SurviveEveryAllocationThatFails) {
  AskedCard card;
  const std::string object = R"({"key":[{"inner":[{}]},"a text that needs memory of its own"]})",
                    arguments = "[" + object + "]";
  card.Answer =
      "\x81\xA3key\x92\x81\xA5inner\x91\x80\xD9\x23"
      "a text that needs memory of its own";
  char text[100] = "";
  std::uint32_t length = 0;
  for (long count = 0, hasFailed = 1; hasFailed != 0; ++count) {
    std::int32_t result = 0;
    {
      const FailingMemory memory(count);
      result = vlCallJson(card.Handle, "Method", arguments.c_str(), text, sizeof text, &length);
      hasFailed = memory.HasFailed();
    }
    const std::string error = LastError();
    const bool isTold = error == "std::bad_alloc" || error == "Unable to generate error message.";
    EXPECT_TRUE(hasFailed != 0 ? result == -1 && isTold : result == 0)
        << result << error << " after " << count;
  }
  EXPECT_EQ(text, object);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
