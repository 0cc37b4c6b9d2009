// The text form of commands and lists. A text is read by the library and, while it is short, by the expressions
// that define the form, run as they stand; both must make the same of it. The text written of what was read
// is read as the same. The first byte of the input chooses between a text and a payload that is written.
#include <cerrno>
#include <cstdlib>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Cursor.h"
#include "Require.h"
#include "lists/CommandCodes.h"
#include "lists/CommandList.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using namespace VELTRO::KELVO::ClientLib;

// std::regex goes deeper with every character, and tries every way to share out a run of blanks.
constexpr std::size_t MostForExpressions = 200;
constexpr std::size_t MostBlanksForExpressions = 10;

const std::regex CommandExpression(
    R"(\{\s*\[?\s*([A-Za-z][A-Za-z0-9]*)\s*(,\s*V([\d]+))?\s*((,\s*[A-Za-z][A-Za-z0-9]*\s*\[[^\]]*\]\s*)*)\s*\]?\s*\})");
const std::regex ValueExpression(R"(([A-Za-z][A-Za-z0-9]*)\s*\[\s*([^\]]*?)\s*\])");
const std::regex NumberExpression(R"([-+]?[\d]*\.?[\d]+([Ee][-+]?[\d]+)?)");
// A word for what would be lost if it separated numbers.
const std::regex NotFinite(R"((^|[^A-Za-z])(nan|inf|infinity)(?![A-Za-z]))", std::regex::icase);
const std::regex WholeNumber(R"([-+]?\d+)");
const std::regex Blanks(R"(\s*)");
const std::regex Separators(R"([\s,]*)");

// What the expressions make of a text. Slow and plain.
class ByExpressions {
 public:
  explicit ByExpressions(const std::string& text) : text_(text) {}

  Command ReadCommand() {
    Take(Blanks);
    const Command command = TakeCommand();
    Take(Blanks);
    if (at_ != text_.size()) throw std::runtime_error("Unable to parse command");
    return command;
  }

  std::vector<Command> ReadList() {
    static const std::regex empty(R"(\s*\[\s*\]\s*)");
    if (std::regex_match(text_, empty)) return {};
    Take(Blanks);
    const bool enclosed = TakeChar('[');
    std::vector<Command> commands;
    for (Take(Separators); IsAt('{'); Take(Separators)) commands.push_back(TakeCommand());
    const bool closed = TakeChar(']');
    Take(Blanks);
    if (enclosed != closed || at_ != text_.size() || commands.empty()) {
      throw std::runtime_error("Unable to parse command");
    }
    return commands;
  }

 private:
  bool IsAt(char c) const { return at_ < text_.size() && text_[at_] == c; }
  bool TakeChar(char c) {
    const bool is = IsAt(c);
    at_ += is ? 1 : 0;
    return is;
  }
  // What the expression takes at the place and nowhere else.
  std::optional<std::smatch> Take(const std::regex& expression) {
    std::smatch match;
    const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(at_);
    if (!std::regex_search(begin, text_.end(), match, expression, std::regex_constants::match_continuous)) {
      return std::nullopt;
    }
    at_ += static_cast<std::size_t>(match.length());
    return match;
  }

  Command TakeCommand() {
    const auto match = Take(CommandExpression);
    if (!match) throw std::runtime_error("Unable to parse command");
    const std::string mnemonic = match->str(1);
    std::int32_t code = 0;
    if (const auto first = CommandCodeAcronym::_from_string_nothrow(mnemonic)) {
      code = *first;
    } else if (const auto second = CommandCodeAcronym2::_from_string_nothrow(mnemonic)) {
      code = *second;
    } else {
      throw std::runtime_error("Unable to parse command code");
    }
    Command command(code);
    const std::string values = match->str(4);
    for (std::sregex_iterator value(values.begin(), values.end(), ValueExpression), end; value != end;
         ++value) {
      const auto type = CommandValueTypeAcronym::_from_string_nothrow(value->str(1));
      if (!type) throw std::runtime_error("unknown type");
      const std::string text = value->str(2);
      ByExpressions(text).AddValue(command, *type);
    }
    if ((*match)[3].matched) {
      const unsigned long long version = std::strtoull(match->str(3).c_str(), nullptr, 10);
      if (version > 255) throw std::runtime_error("version");
      if (command.GetByteCount() > 0 || version != 1) command.setVersion(static_cast<unsigned char>(version));
    }
    return command;
  }

  void AddValue(Command& command, CommandValueTypeAcronym type) {
    using Acronym = CommandValueTypeAcronym;
    switch (type) {
      case Acronym::Bool:
        if (text_ != "True" && text_ != "False") throw std::runtime_error("Bool");
        command.Add(text_ == "True");
        return;
      // clang-format off
      case Acronym::Byte:    command.Add(TakeNumber<std::uint8_t>()); break;
      case Acronym::I16:     command.Add(TakeNumber<std::int16_t>()); break;
      case Acronym::U16:     command.Add(TakeNumber<std::uint16_t>()); break;
      case Acronym::I32:     command.Add(TakeNumber<std::int32_t>()); break;
      case Acronym::U32:     command.Add(TakeNumber<std::uint32_t>()); break;
      case Acronym::I64:     command.Add(TakeNumber<std::int64_t>()); break;
      case Acronym::U64:     command.Add(TakeNumber<std::uint64_t>()); break;
      case Acronym::F64:     command.Add(TakeNumber<double>()); break;
      case Acronym::P2D:     command.Add(TakePoint<Point2D>()); break;
      case Acronym::P3D:     command.Add(TakePoint<Point3D>()); break;
      case Acronym::P4D:     command.Add(TakePoint<Point4D>()); break;
      case Acronym::P2I:     command.Add(TakePoint<Point2DInt>()); break;
      case Acronym::P3I:     command.Add(TakePoint<Point3DInt>()); break;
      case Acronym::P4I:     command.Add(TakePoint<Point4DInt>()); break;
      case Acronym::ByteArr: AddArray<std::uint8_t>(command); break;
      case Acronym::U16Arr:  AddArray<std::uint16_t>(command); break;
      case Acronym::F64Arr:  AddArray<double>(command); break;
      case Acronym::P2DArr:  AddArray<Point2D>(command); break;
      case Acronym::P3DArr:  AddArray<Point3D>(command); break;
      case Acronym::P2IArr:  AddArray<Point2DInt>(command); break;
      case Acronym::P3IArr:  AddArray<Point3DInt>(command); break;
      // clang-format on
      default:
        throw std::runtime_error("no text");
    }
    if (FindNumber()) throw std::runtime_error("more than a value");
  }

  // The next number and what is ahead of it are taken.
  std::optional<std::string> FindNumber() {
    std::smatch match;
    const auto begin = text_.begin() + static_cast<std::ptrdiff_t>(at_);
    const bool found = std::regex_search(begin, text_.end(), match, NumberExpression);
    const std::string ahead(begin, found ? match[0].first : text_.end());
    if (std::regex_search(ahead, NotFinite)) throw std::runtime_error("not a finite number");
    at_ += ahead.size() + static_cast<std::size_t>(found ? match.length() : 0);
    if (!found) return std::nullopt;
    return match.str();
  }

  template <class T>
  T TakeNumber() {
    const auto found = FindNumber();
    if (!found) throw std::runtime_error("no number");
    const std::string& number = *found;
    if constexpr (std::is_floating_point_v<T>) {
      const double value = std::strtod(number.c_str(), nullptr);
      if (value - value != 0) throw std::runtime_error("too large");
      return value;
    } else {
      if (!std::regex_match(number, WholeNumber)) throw std::runtime_error("no whole number");
      if (std::is_unsigned_v<T> && number[0] == '-') throw std::runtime_error("negative");
      errno = 0;
      const auto value = std::is_unsigned_v<T>
                             ? static_cast<__int128>(std::strtoull(number.c_str(), nullptr, 10))
                             : static_cast<__int128>(std::strtoll(number.c_str(), nullptr, 10));
      if (errno == ERANGE || value != static_cast<T>(value)) throw std::runtime_error("does not fit");
      return static_cast<T>(value);
    }
  }

  template <class P>
  P TakePoint() {
    P point;
    for (auto& coordinate : point.Coordinates) coordinate = TakeNumber<typename P::Element>();
    return point;
  }

  template <class T>
  void AddArray(Command& command) {
    std::vector<T> elements;
    while (elements.empty() ? !text_.empty() : HasNumber()) {
      if constexpr (std::is_arithmetic_v<T>) {
        elements.push_back(TakeNumber<T>());
      } else {
        elements.push_back(TakePoint<T>());
      }
    }
    command.Add(std::span<const T>(elements));
  }

  bool HasNumber() const { return ByExpressions(*this).FindNumber().has_value(); }

  const std::string& text_;
  std::size_t at_ = 0;
};

// What `f` fails with, and nothing when it does not. Only the errors that belong to the interface count.
std::string FailureOf(auto&& f) {
  try {
    f();
    return {};
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

bool Same(const CommandView& a, const CommandView& b) {
  return a.Code == b.Code &&
         std::equal(a.Payload.begin(), a.Payload.end(), b.Payload.begin(), b.Payload.end());
}

bool Same(const PackedCommands& list, const std::vector<Command>& commands) {
  bool same = list.GetCommandCount() == commands.size();
  for (std::size_t i = 0; same && i < commands.size(); ++i) same = Same(list.At(i), commands[i]);
  return same;
}

bool IsPlain(const std::string& failure) {
  return failure.empty() || failure == "Unable to parse command" || failure == "Unable to parse command code";
}

// Both take a text or neither; where the text is no command at all, they say the same.
void CompareFailures(const std::string& failure, const std::string& expected) {
  Require(failure.empty() == expected.empty(), "a text is taken exactly when the expressions take it");
  if (IsPlain(failure) || IsPlain(expected)) {
    Require(failure == expected, "a text is refused for what is wrong with it");
  }
}

bool IsForExpressions(std::string_view text) {
  std::size_t run = 0;
  for (const char c : text) {
    run = std::string_view(" \t\n\v\f\r").find(c) == std::string_view::npos ? 0 : run + 1;
    if (run > MostBlanksForExpressions) return false;
  }
  return text.size() <= MostForExpressions;
}

void ReadText(const std::string& text) {
  Command command(0);
  CommandList list;
  list.AppendLoopStart(1);
  const std::string before = list.ToString();
  const std::string commandFailure = FailureOf([&] { command = Command::FromMatch(text); });
  const std::string failure = FailureOf([&] { Command::AppendCommandsFromString(text, list); });
  if (IsForExpressions(text)) {
    Command expected(0);
    CompareFailures(commandFailure, FailureOf([&] { expected = ByExpressions(text).ReadCommand(); }));
    Require(command == expected, "a command is what the expressions find");
    std::vector<Command> commands;
    CompareFailures(failure, FailureOf([&] { commands = ByExpressions(text).ReadList(); }));
    if (failure.empty()) {
      Require(Same(CommandList::FromString(text), commands), "a list is what the expressions find");
    }
  }
  if (!failure.empty()) {
    Require(list.ToString() == before, "a text that is refused leaves the list as it was");
    return;
  }
  const std::string written = list.ToString();
  const CommandList again = CommandList::FromString(written);
  Require(again.ToString() == written, "a text comes back as it is written");
  std::vector<Command> commands;
  list.ForEach([&](const CommandView& view) { commands.emplace_back(view.Code, view.Payload); });
  Require(Same(again, commands), "a list comes back as it was");
}

void WritePayload(Cursor input) {
  const auto names = CommandCodeAcronym::_values();
  const Command command(names[input.Next<std::uint8_t>() % names.size()], input.Rest());
  const std::string text = command.ToString();
  const auto has = [&](const char* what) { return text.find(what) != std::string::npos; };
  Command read(0);
  const bool taken = FailureOf([&] { read = Command::FromString(text); }).empty();
  Require(taken == !(has("Unsupported value") || has("nan") || has("inf")), "what is shown can be read");
  if (taken) Require(read.ToString() == text, "what is shown is what there is");
  if (taken)
    Require(read.GetByteCount() == command.GetByteCount() || command.GetByteCount() == 4, "nothing is lost");
}

}  // namespace

}  // namespace VELTRO::KELVO::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace VELTRO::KELVO::Fuzz;
  Cursor input(data, size);
  if (input.Next<std::uint8_t>() == 'P') {
    WritePayload(input);
  } else {
    const auto text = input.Rest();
    ReadText({text.begin(), text.end()});
  }
  return 0;
}
