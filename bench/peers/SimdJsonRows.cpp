// simdjson: the marks of the text rows as JSON, read one after the other into a bare block.
#include <simdjson.h>

#include <stdexcept>

#include "BareBlock.h"
#include "PeerRows.h"
#include "TextRows.h"

namespace VELTRO::KELVO::Bench {

namespace {

constexpr const char* kReading = "100000 marks from JSON, simdjson";

const simdjson::padded_string& Json() {
  static const simdjson::padded_string json(MarksAsJson());
  return json;
}

double Reading(RowContext&) {
  simdjson::ondemand::parser parser;
  std::size_t count = 0;
  const double time = FastestMilliseconds([&] {
    BareBlock block;
    auto document = parser.iterate(Json());
    for (auto command : document.get_array()) {
      auto point = command["MA"].get_object();
      const double x = point["X"];
      const double y = point["Y"];
      block.AppendMark(x, y);
    }
    count = block.Count();
  });
  if (count != Marks().size()) throw std::runtime_error("marks are missing");
  return time;
}

}  // namespace

void RegisterSimdJsonRows(Harness& harness) {
  harness.AddReference(kReading, "ms", Reading);
  harness.AddLibraryRow("100000 marks from text, library", kReading, AtMost(1.2), RunLibraryReading);
}

}  // namespace VELTRO::KELVO::Bench
