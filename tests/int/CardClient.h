// What tests of the virtual card share: lists written as text, a client that keeps what it is told, and the
// file of a picture.
#pragma once

#include "client/ClientAPI.h"
#include "config/ProcessVariables.h"
#include "config/RecordWire.h"
#include "int/CardProcess.h"
#include "int/Helpers.h"
#include "lists/CommandCodes.h"
#include "lists/ListAPI.h"

namespace VELTRO::KELVO::Test {

using Text = std::string;
using Events = std::vector<Text>;

// Adds a value "U16:5" or an array "F64[1;2;3]", when the word names the type. Points are "1,0".
template <class T>
bool AddTyped(Command& command, const Text& word, const Text& type) {
  if (!word.starts_with(type + ":") && !word.starts_with(type + "[")) return false;
  std::vector<T> values;
  std::istringstream items(word.substr(type.size() + 1));
  for (Text item; std::getline(items, item, ';') && item != "]";) {
    if constexpr (std::is_arithmetic_v<T>) {
      values.push_back(static_cast<T>(std::stod(item)));
    } else {
      std::istringstream numbers(item);
      for (auto& coordinate : values.emplace_back().Coordinates) numbers >> coordinate, numbers.ignore();
    }
  }
  word[type.size()] == '[' ? command.Add(std::span<const T>(values)) : command.Add(values.at(0));
  return true;
}

// A list from mnemonics, each with its values: 1 is an integer, 1.0 a double, "1,0" and "1,0,0" are points,
// "true" and "false" truth values, others as AddTyped has them.
inline CommandList List(const Text& text) {
  std::vector<Command> commands;
  std::istringstream stream(text);
  for (Text word; stream >> word;) {
    double x, y, z;
    const int count = std::sscanf(word.c_str(), "%lf,%lf,%lf", &x, &y, &z);
    const bool isInteger = word.find_first_not_of("-0123456789") == Text::npos;
    const auto isTyped = [&](Command& command) {
      return AddTyped<std::uint16_t>(command, word, "U16") || AddTyped<std::uint32_t>(command, word, "U32") ||
             AddTyped<double>(command, word, "F64") || AddTyped<Point2D>(command, word, "P2D") ||
             AddTyped<Point3D>(command, word, "P3D") || AddTyped<Point2DInt>(command, word, "P2I") ||
             AddTyped<Point3DInt>(command, word, "P3I") || AddTyped<std::uint8_t>(command, word, "Byte");
    };
    if (count == 3) commands.back().Add(Point3D{{x, y, z}});
    if (count == 2) commands.back().Add(Point2D{{x, y}});
    if (count == 1 && isInteger) commands.back().Add(std::stoi(word));
    if (count == 1 && !isInteger) commands.back().Add(x);
    if (count != 0) continue;
    if (word == "true" || word == "false") {
      commands.back().Add(word == "true");
    } else if (commands.empty() || !isTyped(commands.back())) {
      commands.emplace_back(CodeOf(word).value_or(7654321));
    }
  }
  return CommandList(commands);
}

// Keeps every notification in the order of arrival, as "progress 5", "done 7", "idle 7", "error TEXT".
class Client : public ClientAPI {
 public:
  // Calls also what no card has, with whatever arguments.
  template <class Result = void, class... Args>
  auto Call(std::string_view method, const Args&... args) {
    return ClientAPI::Call<Result>(UncheckedMethod{method}, args...);
  }

  explicit Client(const CardProcess& card, const char* address = "127.0.0.1") {
    using Kind = ListEventKind;
    ListEvents& events = GetListEvents();
    events.RegisterCallback(Kind::Progress, [this](int, int i) { Keep("progress " + std::to_string(i)); });
    events.RegisterCallback(Kind::ListDone, [this](int, int i) { Keep("done " + std::to_string(i)); });
    events.RegisterCallback(Kind::ListIdle, [this](int, int i) { Keep("idle " + std::to_string(i)); });
    events.RegisterErrorEventCallback(
        [this](int, int, const char* text, std::uint32_t) { Keep("error " + SecondLine(text)); });
    Connect(IPAddress::Resolve(address), card.GetPort(), 1);
    ProcessVariables variables;  // with speeds at which motions take times that tell them apart
    variables.JumpSpeed = 0.01;
    variables.MarkSpeed = 0.001;
    Call("SetVariables", variables);
  }
  ~Client() override { Disconnect(); }

  // The notifications since the last time, as soon as the latest begins with `last`.
  Events EventsUpTo(const Text& last) {
    std::unique_lock lock(mutex_);
    changed_.wait_for(lock, std::chrono::minutes(1),
                      [&] { return !events_.empty() && events_.back().starts_with(last); });
    return std::exchange(events_, {});
  }
  // Runs the list as list 7 and gives its events.
  Events Run(const Text& text, const Text& last = "idle") {
    CommandList list = List(text);
    Lists.Set(7, list, false, -1);
    Lists.Execute(7);
    return EventsUpTo(last);
  }
  // The text with which the card refuses a call.
  template <class... Args>
  Text Refusal(const char* method, const Args&... args) {
    return SecondLine(Failure([&] { Call(method, args...); }));
  }

  ListAPI Lists{*this, GetListEvents()};

 private:
  // Where descriptions of remote errors have the card's text.
  static Text SecondLine(const Text& text) {
    const std::size_t begin = text.find('\n') + 1;
    return text.substr(begin, text.find('\n', begin) - begin);
  }
  void Keep(const Text& event) {
    const std::lock_guard lock(mutex_);
    events_.push_back(event);
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  Events events_;
};

struct OwnCard {
  CardProcess Card;
};
// A client of a card of its own.
struct LoneClient : OwnCard, Client {
  explicit LoneClient(std::vector<std::string> arguments = {})
      : OwnCard{CardProcess(std::move(arguments))}, Client(Card) {}
};

// A connection that sends and takes mere bytes.
inline int Connect(const CardProcess& card) {
  return Connect(card.GetPort());
}

// The file of a picture.
class PictureFile {
 public:
  Text Name() const { return directory_.Path + "/run.svg"; }
  Text Content() const { return ContentOf(Name()); }

 private:
  TemporaryDirectory directory_;
};

}  // namespace VELTRO::KELVO::Test
