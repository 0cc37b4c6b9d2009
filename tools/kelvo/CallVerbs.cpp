// call: any method of the card.
#include <kelvo/kelvo.h>

#include <nlohmann/json.hpp>

#include "Session.h"
#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

// Only what is written to takes memory.
constexpr std::uint32_t MostAnswerBytes = std::uint32_t{1} << 30;

ExitCode CallMethod(Session& session, const Arguments& given) {
  Json arguments = Json::array();
  for (const std::string& text : given.All("JSON")) {
    arguments.push_back(Json::parse(text, nullptr, false));
    if (arguments.back().is_discarded())
      throw WrongUsage("'" + Clean(text) + "' is no JSON value.", "Texts need quotes: '\"text\"'.");
  }
  const std::unique_ptr<char[]> answer(new char[MostAnswerBytes]);
  std::uint32_t length = 0;
  session.Check(vlCallJson(session.Card(), given.Text("METHOD").c_str(), arguments.dump().c_str(),
                           answer.get(), MostAnswerBytes, &length));
  session.Out.Line(Escaped({answer.get(), length}));
  return ExitCode::Done;
}

}  // namespace

std::span<const Verb> CallVerbs() {
  static const Verb Rows[] = {
      {"call",
       "Call any method of the card by its name",
       {{"METHOD", "", "GetListStatus"}, {"JSON", "", "The arguments, a JSON value each", Parameter::Any}},
       &CallMethod,
       true},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
