// The text form of a long list of 2D marks: the library beside plain loops that know nothing but such marks.
#include "TextRows.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "BareBlock.h"
#include "Wire.h"
#include "lists/CommandList.h"

namespace VELTRO::KELVO::Bench {

namespace {

using ClientLib::CommandList;
using ClientLib::Point2D;

constexpr const char* kWriting = "text of 100000 marks";
constexpr const char* kReading = "100000 marks from text";
constexpr std::size_t kMarks = 100000;
constexpr int kRepetitions = 5;

const CommandList& List() {
  static const CommandList list = [] {
    CommandList all;
    for (const Point2D& mark : Marks()) all.AppendMarkAbs(mark);
    return all;
  }();
  return list;
}

char* Put(char* at, std::string_view text) {
  std::memcpy(at, text.data(), text.size());
  return at + text.size();
}

// The text in a buffer that is large enough; returns its end.
char* WriteMarks(char* at, char* end) {
  at = Put(at, "[ ");
  for (std::size_t i = 0; i < kMarks; ++i) {
    at = Put(at, i == 0 ? "{ MA, P2D[ X=" : ", { MA, P2D[ X=");
    at = std::to_chars(at, end, Marks()[i].X()).ptr;
    at = Put(at, " Y=");
    at = std::to_chars(at, end, Marks()[i].Y()).ptr;
    at = Put(at, " ] }");
  }
  return Put(at, " ]");
}

const std::string& Text() {
  static const std::string text = [] {
    std::string all(kMarks * 80, '\0');
    all.resize(static_cast<std::size_t>(WriteMarks(all.data(), all.data() + all.size()) - all.data()));
    return all;
  }();
  return text;
}

// Takes what it knows where it expects it, blanks as there are.
class MarkScanner {
 public:
  explicit MarkScanner(std::string_view text) : at_(text.data()), end_(at_ + text.size()) {}

  bool Take(char c) {
    while (at_ != end_ && (*at_ == ' ' || *at_ == '\n')) ++at_;
    if (at_ == end_ || *at_ != c) return false;
    ++at_;
    return true;
  }
  void Expect(char c) {
    if (!Take(c)) throw std::runtime_error("not a list of marks");
  }
  void Expect(char c, std::string_view rest) {
    Expect(c);
    if (!std::string_view(at_, static_cast<std::size_t>(end_ - at_)).starts_with(rest)) Expect('\0');
    at_ += rest.size();
  }
  double ExpectNumber() {
    double number = 0;
    const auto [at, error] = std::from_chars(at_, end_, number);
    if (error != std::errc()) throw std::runtime_error("not a number");
    at_ = at;
    return number;
  }

 private:
  const char* at_;
  const char* end_;
};

std::size_t ReadMarks(std::string_view text) {
  BareBlock block;
  MarkScanner scanner(text);
  scanner.Expect('[');
  do {
    Point2D point;
    scanner.Expect('{');
    scanner.Expect('M', "A");
    scanner.Expect(',');
    scanner.Expect('P', "2D");
    scanner.Expect('[');
    scanner.Expect('X', "=");
    point.Coordinates[0] = scanner.ExpectNumber();
    scanner.Expect('Y', "=");
    point.Coordinates[1] = scanner.ExpectNumber();
    scanner.Expect(']');
    scanner.Expect('}');
    block.AppendMark(point.X(), point.Y());
  } while (scanner.Take(','));
  scanner.Expect(']');
  return block.Count();
}

void Require(bool holds) {
  if (!holds) throw std::runtime_error("not the same list or text");
}

double PlainWriting(RowContext&) {
  std::vector<char> buffer(Text().size() + 400);
  char* end = nullptr;
  const double time =
      FastestMilliseconds([&] { end = WriteMarks(buffer.data(), buffer.data() + buffer.size()); });
  Require(std::string_view(buffer.data(), static_cast<std::size_t>(end - buffer.data())) == Text());
  return time;
}

double PlainReading(RowContext&) {
  std::size_t count = 0;
  const std::string& text = Text();
  const double time = FastestMilliseconds([&] { count = ReadMarks(text); });
  Require(count == kMarks);
  return time;
}

}  // namespace

// One coordinate as a drawing has it, one as a computation leaves it.
const std::vector<Point2D>& Marks() {
  static const std::vector<Point2D> marks = [] {
    std::vector<Point2D> all(kMarks);
    for (std::size_t i = 0; i < kMarks; ++i) {
      const auto angle = static_cast<double>(i) * 0.001;
      all[i] = {std::round(40000 * std::cos(angle)) / 1000, 40 * std::sin(angle)};
    }
    return all;
  }();
  return marks;
}

std::string MarksAsJson() {
  std::string json = "[";
  for (const Point2D& mark : Marks()) {
    char numbers[2][32];
    const auto text = [&](char(&number)[32], double value) {
      return std::string_view(number, static_cast<std::size_t>(
                                          std::to_chars(number, number + sizeof number, value).ptr - number));
    };
    json.append(json.size() > 1 ? "," : "").append("{\"MA\":{\"X\":").append(text(numbers[0], mark.X()));
    json.append(",\"Y\":").append(text(numbers[1], mark.Y())).append("}}");
  }
  return json + "]";
}

double FastestMilliseconds(const std::function<void()>& work) {
  double shortest = 1e9;
  for (int i = 0; i < kRepetitions; ++i) {
    const std::uint64_t begin = NowNs();
    work();
    shortest = std::min(shortest, static_cast<double>(NowNs() - begin) * 1e-6);
  }
  return shortest;
}

double RunLibraryWriting(RowContext&) {
  std::string text;
  const CommandList& list = List();
  const double time = FastestMilliseconds([&] { text = list.ToString(); });
  Require(text == Text());
  return time;
}

double RunLibraryReading(RowContext&) {
  CommandList list;
  const std::string& text = Text();
  const double time = FastestMilliseconds([&] { list = CommandList::FromString(text); });
  Require(list.ToString() == text);
  return time;
}

void RegisterTextRows(Harness& harness) {
  harness.AddReference(kWriting, "ms", PlainWriting);
  harness.AddLibraryRow("text of 100000 marks, library", kWriting, AtMost(0.8), RunLibraryWriting);
  harness.AddReference(kReading, "ms", PlainReading);
  harness.AddLibraryRow("100000 marks from text, library", kReading, AtMost(0.9), RunLibraryReading);
}

}  // namespace VELTRO::KELVO::Bench
