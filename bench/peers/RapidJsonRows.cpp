// RapidJSON: the marks of the text rows written as JSON.
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <stdexcept>
#include <string_view>

#include "PeerRows.h"
#include "TextRows.h"

namespace VELTRO::KELVO::Bench {

namespace {

constexpr const char* kWriting = "100000 marks as JSON, RapidJSON";

double Writing(RowContext&) {
  rapidjson::StringBuffer text;
  const double time = FastestMilliseconds([&] {
    text.Clear();
    rapidjson::Writer<rapidjson::StringBuffer> writer(text);
    writer.StartArray();
    for (const auto& mark : Marks()) {
      writer.StartObject();
      writer.Key("MA");
      writer.StartObject();
      writer.Key("X");
      writer.Double(mark.X());
      writer.Key("Y");
      writer.Double(mark.Y());
      writer.EndObject();
      writer.EndObject();
    }
    writer.EndArray();
  });
  constexpr std::string_view Begin = R"([{"MA":{"X":40.0,"Y":0.0}},)";
  if (!std::string_view(text.GetString(), text.GetSize()).starts_with(Begin))
    throw std::runtime_error("not these marks");
  return time;
}

}  // namespace

void RegisterRapidJsonRows(Harness& harness) {
  harness.AddReference(kWriting, "ms", Writing);
  harness.AddLibraryRow("text of 100000 marks, library", kWriting, AtMost(1), RunLibraryWriting);
}

}  // namespace VELTRO::KELVO::Bench
