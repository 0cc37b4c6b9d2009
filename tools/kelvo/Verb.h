// The verbs of the tool, as data: a row each. The parser, the help and the suggestions after a wrong word are made of
// the rows.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Failure.h"

namespace VELTRO::KELVO::Tool {

// An argument, called FILE, say; an option, called --id, that takes a value; or, without a value, a flag.
struct Parameter {
  std::string_view Name;
  std::string_view Value;
  std::string_view Help;
  enum {
    One,
    AtMostOne,
    Any,
    AtLeastOne
  } Number = One;  // of arguments; an option is given once, or any number of times

  bool IsOption() const { return Name.starts_with('-'); }
  bool IsMany() const { return Number == Any || Number == AtLeastOne; }
};

// What stands for a parameter's value, so that it can be completed.
enum class Kind {
  Text,
  LocalFile,
  FileOrArea,
  Area,
  Field,
  FieldValue,
  ListId,
  CardDirectory,
  CardFile,
  OnOrOff
};
// It follows from what the help calls the value: FILE, ID, FIELD and so on.
Kind KindOf(const Parameter& parameter);

// What was given for the parameters of a verb. The getters take a parameter's name.
class Arguments {
 public:
  void Add(std::string_view name, std::vector<std::string> texts) {
    given_[std::string(name)] = std::move(texts);
  }

  bool Has(std::string_view name) const { return given_.contains(std::string(name)); }
  const std::vector<std::string>& All(std::string_view name) const;
  // The only one, or nothing: an empty text.
  const std::string& Text(std::string_view name) const;
  // A whole number that the type has, decimal or 0x and hexadecimal. Throws Failure, WrongUsage.
  std::int32_t Int32(std::string_view name) const {
    return static_cast<std::int32_t>(Whole(name, INT32_MIN, INT32_MAX));
  }
  std::int64_t Whole(std::string_view name, std::int64_t least, std::int64_t most) const;

 private:
  std::map<std::string, std::vector<std::string>> given_;
};

// The number that a text is. Throws Failure, WrongUsage: "NAME takes ..., not 'TEXT'.".
std::int64_t ParseWhole(std::string_view name, std::string_view text, std::int64_t least, std::int64_t most);
double ParseNumber(std::string_view name, std::string_view text);
// "500ms" or "2s" in milliseconds.
std::uint32_t ParseTime(std::string_view name, std::string_view text);

class Session;

struct Verb {
  std::string_view Path;  // "list run"
  std::string_view Help;
  std::vector<Parameter> Parameters;
  ExitCode (*Run)(Session&, const Arguments&);
  bool TakesRest = false;  // the last argument takes whatever comes, also what looks like an option
};

// The rows of each file of verbs.
std::span<const Verb> BackupVerbs();
std::span<const Verb> CallVerbs();
std::span<const Verb> CardVerbs();
std::span<const Verb> ConfigVerbs();
std::span<const Verb> CorrectionVerbs();
std::span<const Verb> FileVerbs();
std::span<const Verb> FontVerbs();
std::span<const Verb> IoVerbs();
std::span<const Verb> LaserVerbs();
std::span<const Verb> ListVerbs();
std::span<const Verb> LogVerbs();
std::span<const Verb> RecordVerbs();
std::span<const Verb> RehearsalVerbs();
std::span<const Verb> SessionVerbs();

std::vector<const Verb*> AllVerbs();
// What every verb takes.
std::span<const Parameter> CommonOptions();

}  // namespace VELTRO::KELVO::Tool
