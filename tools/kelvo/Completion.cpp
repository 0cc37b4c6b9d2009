#include "Completion.h"

#include <kelvo/kelvo.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <set>

#include "Session.h"
#include "Settings.h"
#include "Verb.h"
#include "services/FileEnums.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr int MostMs = 250;

// The words that begin like the one under the cursor.
class Offers {
 public:
  explicit Offers(std::string begun) : Begun(std::move(begun)) {}

  const std::string Begun;

  void Add(const std::string& word, std::string_view help = {}) {
    // What cannot be typed is no help.
    if (!word.starts_with(Begun) || Clean(word) != word || !told_.insert(word).second) return;
    text_ += help.empty() ? word + "\n" : word + "\t" + Clean(help) + "\n";
  }
  void AddLocalFiles() { text_ += ":files\n"; }
  void Print() {
    std::fwrite(text_.data(), 1, text_.size(), stdout);
    std::fflush(stdout);
    text_.clear();
  }

 private:
  std::set<std::string> told_;
  std::string text_;
};

// What stands on the line ahead of the word under the cursor.
struct Line {
  std::vector<const Verb*> Verbs;  // those that the words may be the beginning of
  std::string Path;                // what is given of a verb's, with a blank behind each word
  const Verb* Called = nullptr;
  std::size_t Arguments = 0;
  const Parameter* Awaited = nullptr;  // the option whose value is the word under the cursor
  std::set<std::string> Options;
  std::string Card;
};

const Parameter* FindOption(const Verb* verb, std::string_view name) {
  const auto in = [&](std::span<const Parameter> parameters) -> const Parameter* {
    const auto found = std::ranges::find(parameters, name, &Parameter::Name);
    return found != parameters.end() && found->IsOption() ? &*found : nullptr;
  };
  const Parameter* const common = in(CommonOptions());
  return common != nullptr || verb == nullptr ? common : in(verb->Parameters);
}

void TakeWord(Line& line, const std::string& word) {
  if (line.Called != nullptr) {
    ++line.Arguments;
    return;
  }
  line.Path += word + " ";
  std::erase_if(line.Verbs,
                [&](const Verb* verb) { return !(std::string(verb->Path) + " ").starts_with(line.Path); });
  if (line.Verbs.size() == 1 && std::string(line.Verbs[0]->Path) + " " == line.Path)
    line.Called = line.Verbs[0];
}

Line ReadLine(const std::vector<std::string>& words) {
  Line line;
  line.Verbs = AllVerbs();
  for (const std::string& word : words) {
    if (line.Awaited != nullptr) {
      if (line.Awaited->Name == "--card") line.Card = word;
      line.Awaited = nullptr;
    } else if (word.size() > 1 && word.starts_with('-')) {
      const std::size_t equals = std::min(word.find('='), word.size());
      const std::string name = word.substr(0, equals);
      line.Options.insert(name);
      if (name == "--card" && equals < word.size()) line.Card = word.substr(equals + 1);
      const Parameter* const option = FindOption(line.Called, name);
      if (option != nullptr && !option->Value.empty() && equals == word.size()) line.Awaited = option;
    } else {
      TakeWord(line, word);
    }
  }
  return line;
}

void OfferVerbs(const Line& line, Offers& offers) {
  for (const Verb* verb : line.Verbs) {
    const std::string rest(verb->Path.substr(line.Path.size()));
    const bool isGroup = rest.find(' ') != std::string::npos;
    offers.Add(rest.substr(0, rest.find(' ')), isGroup ? "" : verb->Help);
  }
}

void OfferOptions(const Line& line, Offers& offers) {
  const auto offer = [&](std::span<const Parameter> parameters) {
    for (const Parameter& option : parameters) {
      const std::string name(option.Name);
      if (option.IsOption() && !line.Options.contains(name)) offers.Add(name, option.Help);
    }
  };
  if (line.Called != nullptr) offer(line.Called->Parameters);
  offer(CommonOptions());
  offers.Add("--help", "Tell what there is");
}

const Parameter* ArgumentAt(const Verb& verb, std::size_t index) {
  for (const Parameter& parameter : verb.Parameters) {
    if (parameter.IsOption()) continue;
    if (index == 0 || parameter.IsMany()) return &parameter;
    --index;
  }
  return nullptr;
}

void OfferAreas(Offers& offers, const char* behind) {
  for (const Area& area : Areas()) offers.Add(std::string(area.Name) + behind);
}

// The fields that are parts of what is written up to the last point. `settings` are those of their area.
void OfferFields(Json settings, Offers& offers, const char* behind) {
  const std::string parent = offers.Begun.substr(0, offers.Begun.rfind('.'));
  const Json& fields = FindField(settings, ParseField(parent));
  if (!fields.is_object()) return;
  for (const auto& [name, value] : fields.items()) {
    const std::string path = PathOf(parent, name, false);
    const bool hasParts = value.is_structured() && !value.empty() && value.begin()->is_structured();
    const bool isRecord = value.is_object() && !value.empty() &&
                          std::isdigit(static_cast<unsigned char>(value.items().begin().key()[0])) == 0;
    if (isRecord) {
      offers.Add(path + ".");
    } else if (hasParts) {
      for (const auto& item : value.items()) offers.Add(PathOf(path, item.key(), true) + ".");
    } else {
      offers.Add(path + behind);
    }
  }
}

void OfferDirectories(Offers& offers, const char* behind) {
  for (const auto& name : ClientLib::DirectorySelector::_names()) offers.Add(std::string(name) + behind);
}

void OfferLists(Session& session, Offers& offers) {
  std::vector<std::int32_t> ids(65536);
  std::uint32_t count = 0;
  session.Check(
      vlListGetStoredListIDs(session.Card(), ids.data(), static_cast<std::uint32_t>(ids.size()), &count));
  ids.resize(count);
  for (const std::int32_t id : ids) offers.Add(std::to_string(id));
}

void OfferCardFiles(Session& session, Offers& offers) {
  const std::string directory = offers.Begun.substr(0, offers.Begun.find('/'));
  const auto known = ClientLib::DirectorySelector::_from_string_nothrow(directory);
  if (directory == offers.Begun || !known) return;
  std::vector<char> names(std::size_t{1} << 20);
  std::uint32_t length = 0, count = 0;
  session.Check(vlFileGetFiles(session.Card(), known->_to_integral(), names.data(),
                               static_cast<std::uint32_t>(names.size()), &length, &count));
  const char* name = names.data();
  for (std::uint32_t i = 0; i < count; ++i, name += std::string_view(name).size() + 1)
    offers.Add(directory + "/" + name);
}

void OfferFieldsOf(Session* session, Offers& offers, const char* behind) {
  const std::size_t equals = offers.Begun.find('=');
  if (equals != std::string::npos) {
    const std::string field = offers.Begun.substr(0, equals);
    for (const std::string& name : ChoicesFor(ParseField(field)))
      offers.Add(std::string(field).append("=").append(name));
    return;
  }
  const std::size_t dot = offers.Begun.find('.');
  if (dot == std::string::npos) return OfferAreas(offers, ".");
  const Area& area = FindArea(offers.Begun.substr(0, dot));
  OfferFields(session == nullptr ? area.Defaults() : area.Get(*session), offers, behind);
}

// With a session also what its card knows.
void OfferValues(Kind kind, bool hasDefaults, Session* session, Offers& offers) {
  switch (kind) {
    case Kind::Text:
      break;
    case Kind::LocalFile:
      offers.AddLocalFiles();
      break;
    case Kind::FileOrArea:
      hasDefaults ? OfferAreas(offers, "") : offers.AddLocalFiles();
      break;
    case Kind::Area:
      OfferAreas(offers, "");
      break;
    case Kind::Field:
      OfferFieldsOf(session, offers, "");
      break;
    case Kind::FieldValue:
      OfferFieldsOf(session, offers, "=");
      break;
    case Kind::CardDirectory:
      OfferDirectories(offers, "");
      break;
    case Kind::OnOrOff:
      offers.Add("on");
      offers.Add("off");
      break;
    case Kind::ListId:
      if (session != nullptr) OfferLists(*session, offers);
      break;
    case Kind::CardFile:
      session == nullptr ? OfferDirectories(offers, "/") : OfferCardFiles(*session, offers);
      break;
  }
}

// The card that the verb would go to, if that is known without a search.
std::string CardOf(const Line& line) {
  const char* const named = std::getenv("KELVO_CARD");  // NOLINT(concurrency-mt-unsafe): nobody else runs yet
  if (!line.Card.empty()) return line.Card;
  return line.Options.contains("--serial") || named == nullptr ? "" : named;
}

bool IsAnswer(Kind kind) {
  return kind == Kind::Field || kind == Kind::FieldValue || kind == Kind::ListId || kind == Kind::CardFile;
}

void Offer(const Line& line, Offers& offers) {
  if (line.Awaited == nullptr && offers.Begun.starts_with('-')) return OfferOptions(line, offers);
  if (line.Awaited == nullptr && line.Called == nullptr) return OfferVerbs(line, offers);
  const Parameter* const parameter =
      line.Awaited != nullptr ? line.Awaited : ArgumentAt(*line.Called, line.Arguments);
  if (parameter == nullptr) return;
  const Kind kind = KindOf(*parameter);
  const bool hasDefaults = line.Options.contains("--defaults");
  OfferValues(kind, hasDefaults, nullptr, offers);
  offers.Print();
  const std::string card = CardOf(line);
  if (card.empty() || !IsAnswer(kind)) return;
  Session session(Output(false, true), {{card}, {}, "", "", false});
  OfferValues(kind, hasDefaults, &session, offers);
}

}  // namespace

int Complete(const std::vector<std::string>& words) {
  signal(SIGALRM, [](int) { _exit(0); });
  const itimerval most{{0, 0}, {0, std::chrono::microseconds(std::chrono::milliseconds(MostMs)).count()}};
  setitimer(ITIMER_REAL, &most, nullptr);
  if (words.empty()) return 0;
  Offers offers(words.back());
  try {
    Offer(ReadLine({words.begin(), words.end() - 1}), offers);
  } catch (const std::exception&) {  // whoever types has not come to the end yet
  }
  offers.Print();
  return 0;
}

}  // namespace VELTRO::KELVO::Tool
