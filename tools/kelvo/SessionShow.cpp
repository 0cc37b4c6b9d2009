#include "SessionShow.h"

#include <algorithm>
#include <bit>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "common/Characters.h"
#include "rpc/JsonForm.h"

namespace VELTRO::KELVO::Tool {

using ClientLib::FrameWay;
using ClientLib::Recording::Line;
using ClientLib::Recording::LineKind;
using std::chrono::microseconds;
namespace Recording = ClientLib::Recording;

namespace {

constexpr std::size_t MostShown = 120;
constexpr std::size_t WidestBar = 40;

bool IsAnswer(LineKind kind) {
  return kind == LineKind::Response || kind == LineKind::Error;
}

std::string Cut(std::string text) {
  if (text.size() <= MostShown) return text;
  const std::size_t end = ClientLib::WholeCharacters(text, MostShown);
  const std::string left = std::to_string(text.size() - end);
  text.resize(end);
  return text + "... (" + left + " more)";
}

std::string Milliseconds(microseconds time) {
  char text[40];
  std::snprintf(text, sizeof text, "%.3f ms", static_cast<double>(time.count()) / 1000);
  return text;
}

std::string ContentOf(const Line& line) {
  if (line.PackedBytes) return "[" + std::to_string(line.PackedBytes->size()) + " bytes of MessagePack]";
  std::string text = ClientLib::JsonForm::TextOf(line.Content);
  if (line.LeftOut > 0) text += " [" + std::to_string(line.LeftOut) + " bytes left out]";
  return text;
}

std::string Told(const Line& line) {
  const std::string method = line.Method.empty() ? "?" : line.Method;
  switch (line.Head.Kind) {
    case LineKind::Request:
      return method + " " + Cut(ContentOf(line));
    case LineKind::Response:
      return method + " = " + Cut(ContentOf(line));
    case LineKind::Error:
      return method + " failed: " + Cut(ContentOf(line));
    case LineKind::Notification:
    case LineKind::ErrorNotification:
      return std::string(Recording::KindWords[static_cast<std::size_t>(line.Head.Kind)]) + " " +
             Cut(ContentOf(line));
    case LineKind::Raw:
      return std::to_string(line.LeftOut > 0 ? line.LeftOut : line.Raw.size()) + " bytes that are no frame";
    case LineKind::Missing:
      return line.Missing > 0 ? std::to_string(line.Missing) + " frames are missing"
                              : std::to_string(line.MissingBytes) + " bytes are missing";
    case LineKind::Opened:
      return "opened";
    case LineKind::Ended:
      return "ended";
  }
  return {};
}

double Seconds(microseconds time) {
  return static_cast<double>(time.count()) / 1e6;
}

}  // namespace

std::optional<microseconds> AnswerTimes::Take(const Line& line) {
  const std::uint64_t place = std::uint64_t{line.Head.Connection} << 32 | line.Id;
  if (line.Head.Kind == LineKind::Request) asked_[place] = line.Head.Time;
  if (!IsAnswer(line.Head.Kind)) return std::nullopt;
  const auto asked = asked_.extract(place);
  if (asked.empty()) return std::nullopt;
  return line.Head.Time - asked.mapped();
}

std::string ShownLine(const Line& line, std::optional<microseconds> took) {
  char head[80];
  const bool hasWay = line.Head.Kind != LineKind::Opened && line.Head.Kind != LineKind::Missing;
  std::snprintf(head, sizeof head, "%12.6f %3u %c ", Seconds(line.Head.Time), line.Head.Connection,
                !hasWay                             ? ' '
                : line.Head.Way == FrameWay::ToCard ? '>'
                                                    : '<');
  return head + Clean(Told(line)) + (took ? "  (" + Milliseconds(*took) + ")" : "");
}

Json JsonOfLine(const Line& line, std::optional<microseconds> took) {
  Json json = {{"time", Seconds(line.Head.Time)},
               {"connection", line.Head.Connection},
               {"kind", Recording::KindWords[static_cast<std::size_t>(line.Head.Kind)]},
               {"text", Told(line)}};
  if (line.Head.Kind != LineKind::Opened && line.Head.Kind != LineKind::Missing) {
    json["way"] = Recording::WayWords[static_cast<std::size_t>(line.Head.Way)];
  }
  if (!line.Method.empty()) json["method"] = line.Method;
  if (took) json["took"] = Seconds(*took);
  return json;
}

void AnswerStatistics::Take(const Line& line, std::optional<microseconds> took) {
  if (line.Head.Kind == LineKind::Request) ++methods_[line.Method].Calls;
  if (!IsAnswer(line.Head.Kind) || !took) return;
  Method& method = methods_[line.Method];
  if (line.Head.Kind == LineKind::Error) ++method.Errors;
  method.Times.push_back(*took);
}

std::vector<AnswerStatistics::Bin> AnswerStatistics::Histogram(const std::vector<microseconds>& sorted) {
  std::vector<Bin> bins;
  for (const microseconds time : sorted) {
    const auto below =
        static_cast<std::int64_t>(std::uint64_t{1} << std::bit_width(
                                      static_cast<std::uint64_t>(std::max<std::int64_t>(time.count(), 0))));
    // Empty ones between, so that distances are seen.
    while (!bins.empty() && bins.back().Below < below) bins.push_back({bins.back().Below * 2, 0});
    if (bins.empty()) bins.push_back({below, 0});
    ++bins.back().Count;
  }
  return bins;
}

void AnswerStatistics::Print(const Output& out) const {
  Json all = Json::array();
  for (const auto& [name, method] : methods_) {
    std::vector<microseconds> times = method.Times;
    std::ranges::sort(times);
    const auto at = [&](double part) {
      return times[static_cast<std::size_t>(part * static_cast<double>(times.size() - 1))];
    };
    const std::vector<Bin> bins = Histogram(times);
    Json one = {{"method", name},
                {"calls", method.Calls},
                {"errors", method.Errors},
                {"unanswered", method.Calls - std::min<std::uint64_t>(method.Calls, times.size())}};
    std::string line =
        Clean(name) + ": " + std::to_string(method.Calls) + (method.Calls == 1 ? " call" : " calls");
    if (method.Errors > 0) line += ", " + std::to_string(method.Errors) + " failed";
    if (one["unanswered"] > 0) line += ", " + one["unanswered"].dump() + " not answered";
    if (!times.empty()) {
      one["least"] = Seconds(times.front());
      one["median"] = Seconds(at(0.5));
      one["mostOf99Percent"] = Seconds(at(0.99));
      one["most"] = Seconds(times.back());
      line += "; least " + Milliseconds(times.front()) + ", median " + Milliseconds(at(0.5)) +
              ", 99 % within " + Milliseconds(at(0.99)) + ", most " + Milliseconds(times.back());
    }
    one["histogram"] = Json::array();
    std::size_t tallest = 1;
    for (const Bin& bin : bins) tallest = std::max(tallest, bin.Count);
    if (!out.AsJson) out.Line(line);
    for (const auto& [below, count] : bins) {
      one["histogram"].push_back({{"below", static_cast<double>(below) / 1e6}, {"answers", count}});
      char row[80];
      std::snprintf(row, sizeof row, "  < %12s %7zu  ", Milliseconds(microseconds(below)).c_str(), count);
      const std::size_t bar = (count * WidestBar + tallest - 1) / tallest;
      if (!out.AsJson) out.Line(row + std::string(bar, '#'));
    }
    all.push_back(std::move(one));
  }
  if (out.AsJson) out.Print(all);
}

}  // namespace VELTRO::KELVO::Tool
