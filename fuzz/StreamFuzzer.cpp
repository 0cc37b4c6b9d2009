// A whole connection with a peer that says anything: the real client on one side of a loopback connection,
// the fuzzer's input on the other. Every call has to end, with a result or an error that belongs to the
// interface; one that does not end is a hang, for which libFuzzer's -timeout is there.
//
// The input: how the connection goes, what the callbacks do, what is called, then the stream as it is sent.
#include <algorithm>
#include <array>
#include <chrono>
#include <iostream>
#include <span>
#include <stdexcept>
#include <streambuf>
#include <string>
#include <string_view>
#include <vector>

#include "Card.h"
#include "Cursor.h"
#include "Reference.h"
#include "Require.h"
#include "client/ClientAPI.h"
#include "lists/ListAPI.h"
#include "rpc/Body.h"
#include "rpc/LogText.h"

namespace VELTRO::KELVO::Fuzz {

namespace {

using namespace VELTRO::KELVO::ClientLib;

// Longer than libFuzzer waits: a call that needs it hangs.
constexpr unsigned LongTimeoutMs = 60000;
// Where nobody says that no more comes.
constexpr unsigned ShortTimeoutMs = 1;
constexpr std::int32_t Handle = 7;
constexpr unsigned MostCalls = 4;

// The receive thread's last words go to std::cout.
class NullBuffer : public std::streambuf {
 protected:
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

enum class CallbackAction { Nothing, CallCard, ThrowError, ThrowAnything, Register };
constexpr unsigned CallbackActions = 5;

// What the input's first bytes decide.
struct Plan {
  explicit Plan(Cursor& input) {
    constexpr std::array<std::size_t, 8> Pieces = {0, 1, 2, 5, 6, 7, 64, 1000};
    const auto how = input.Next<std::uint8_t>();
    const unsigned ending = how & 7U;
    Connection.End = ending < 4   ? Script::Ending::Close
                     : ending < 7 ? Script::Ending::Reset
                                  : Script::Ending::StaysOpen;
    Connection.Piece = Pieces[(how >> 3) & 7U];
    Logging = (how & 0x40U) != 0;
    // The first calls of a connection have a long time-out, so the peer must end it.
    Handshake = (how & 0x80U) != 0 && Connection.End != Script::Ending::StaysOpen;
    Action = static_cast<CallbackAction>(input.Next<std::uint8_t>() % CallbackActions);
    for (auto& kind : Calls) kind = input.Next<std::uint8_t>();
    Connection.Stream = input.Rest();
  }

  Script Connection;
  bool Logging = false;
  bool Handshake = false;
  CallbackAction Action = CallbackAction::Nothing;
  std::array<std::uint8_t, MostCalls> Calls{};
};

// What must come of a stream as far as it is sound beyond doubt.
struct Expectation {
  explicit Expectation(const Plan& plan) {
    // Callbacks that call use up numbers of requests, those that throw end the connection, and a connection
    // that is not ended in order may lose what is under way.
    const bool calm = plan.Action == CallbackAction::Nothing || plan.Action == CallbackAction::Register;
    if (plan.Handshake || !calm || plan.Connection.End != Script::Ending::Close) return;
    auto rest = plan.Connection.Stream;
    while (Take(FirstFrame(rest))) rest = rest.subspan(FirstFrame(rest).size());
  }

  std::vector<std::span<const unsigned char>> Answers;  // to the calls in their order, from the first on
  std::size_t Events = 0;                               // at least so many are notified

 private:
  // False for a frame that may end the connection.
  bool Take(std::span<const unsigned char> frame) {
    if (!IsWhole(frame) || frame[0] != FrameStart) return false;
    const auto body = BodyOf(frame);
    if ((frame[1] & NotificationBit) == 0) {
      const auto id = RequestIdOf(body);
      if (id && id->Value == Answers.size()) Answers.push_back(frame);
      return id.has_value();
    }
    // An array of a kind and a small number.
    const bool isEvent = (frame[1] & ErrorBit) == 0 && body.size() == 3 && body[0] == '\x92' &&
                         (body[1] == 1 || body[1] == 2 || body[1] == 0x11) && body[2] >= 0;
    if (isEvent) ++Events;
    return isEvent;
  }
};

// The errors of a call that got no answer.
bool IsUnanswered(const std::string& error) {
  return error == "ConnectionAborted" || error == "Connection not active!" ||
         error == "Socket error, unable to send!" ||
         error == "Response was not received in the given timespan.";
}

// Whether `f` ends without an error. Only the errors that belong to the interface count as such.
bool Succeeds(auto&& f) {
  try {
    f();
    return true;
  } catch (const std::runtime_error&) {
    return false;
  } catch (const msgpack::type_error&) {
    return false;
  }
}

class Client {
 public:
  explicit Client(const Plan& plan) : plan_(plan) {
    for (const ListEventKind kind : Kinds) {
      events_.RegisterCallback(kind, [this, kind](std::int32_t connection, std::int32_t) {
        Require(connection == Handle, "a callback learns whose event it is");
        ++called_[Index(kind)];
        Act();
      });
    }
    events_.RegisterErrorEventCallback(
        [this](std::int32_t connection, std::int32_t, const char* text, std::uint32_t length) {
          Require(connection == Handle, "a callback learns whose error it is");
          Require(text[length] == 0, "an error's text ends where its length says");
          ++errors_;
          Act();
        });
  }

  void Run(Card& card) {
    const bool connected = Succeeds([&] { Connect(card); });
    // A connection that is torn down at once may never come about.
    const bool certain = !plan_.Handshake && plan_.Connection.End != Script::Ending::Reset;
    Require(connected || !certain, "a listening peer is connected to");
    if (plan_.Logging) {
      static_cast<void>(Succeeds([&] { api_.EnableCommandLogging("/dev/null", -1); }));
    }
    for (; calls_ < plan_.Calls.size(); ++calls_) {
      const bool answered = IsAnswered(plan_.Calls[calls_]);
      Require(answered || calls_ >= expected_.Answers.size(), "an answer in its turn reaches its call");
    }
    card.EndOfCalls();
    TakeEvents();
    api_.Disconnect();
    Require(!Succeeds([&] { api_.Call(UncheckedMethod{"GetListStatus"}); }),
            "nothing is called without a connection");
    CheckEvents();
  }

 private:
  static constexpr std::array Kinds = {ListEventKind::Progress, ListEventKind::ListIdle,
                                       ListEventKind::ListDone};
  static std::size_t Index(ListEventKind kind) { return static_cast<std::size_t>(kind); }

  void Connect(const Card& card) {
    if (plan_.Handshake) {
      api_.Connect(card.GetAddress(), card.GetPort(), Handle);
      return;
    }
    api_.ClientAdapter::Connect(card.GetAddress(), card.GetPort(), LongTimeoutMs, Handle);
    if (plan_.Connection.End == Script::Ending::StaysOpen) api_.SetTimeout(ShortTimeoutMs);
  }

  bool IsAnswered(std::uint8_t kind) {
    bool answered = true;
    static_cast<void>(Succeeds([&] {
      try {
        Call(kind);
      } catch (const std::runtime_error& error) {
        answered = !IsUnanswered(error.what());
      }
    }));
    return answered;
  }

  void Call(std::uint8_t kind) {
    constexpr unsigned CallKinds = 12;
    switch (kind % CallKinds) {
      case 0:
        list_.Execute(1);
        break;
      case 1:
        list_.IsExecutionInProgress();
        break;
      case 2:
        list_.GetListStatus(1);
        break;
      case 3:
        api_.GetCardSerialNumber();
        break;
      case 4:
        list_.GetStoredListIDs();
        break;
      case 5:
        static_cast<void>(list_.Get(1).ToString());
        break;
      case 6:
        static_cast<void>(list_.GetLastExecutionStats().ToString());
        break;
      case 7: {
        const auto result = api_.Call<msgpack::object>(UncheckedMethod{"GetAnything"}, true, -1, "text");
        Require(!LogText(result.Object.get()).empty(), "every result has a text");
        if (calls_ < expected_.Answers.size()) CheckResult(result, expected_.Answers[calls_]);
        break;
      }
      case 8:
        api_.Call<double>(UncheckedMethod{"GetNumber"});
        break;
      case 9: {
        CommandList commands;
        commands.AppendJumpAbs(Point2D{{1, 2}});
        commands.AppendLaserOn();
        list_.Set(1, commands, false, 0);
        break;
      }
      case 10:
        api_.Call<std::vector<std::string>>(UncheckedMethod{"GetNames"});
        break;
      default: {
        CommandList nothing;
        list_.Set(1, nothing, false, 0);
        break;
      }
    }
  }

  // The result is what stands in the answer.
  static void CheckResult(const RawResult& result, std::span<const unsigned char> answer) {
    const auto body = BodyOf(answer);
    std::size_t used = 0;
    const auto expected = Body::Unpack(body.subspan(RequestIdOf(body)->Length), used, Body::UsualDepth);
    msgpack::sbuffer a;
    msgpack::sbuffer b;
    msgpack::pack(a, result.Object.get());
    msgpack::pack(b, expected.get());
    Require(std::string_view(a.data(), a.size()) == std::string_view(b.data(), b.size()),
            "a call's result is its own answer's");
  }

  // What a callback may do and what it may not.
  void Act() {
    switch (plan_.Action) {
      case CallbackAction::Nothing:
        break;
      case CallbackAction::CallCard:
        Require(!Succeeds([&] { api_.Call(UncheckedMethod{"GetListStatus"}); }),
                "a callback does not call its own connection");
        Require(!Succeeds([&] { list_.WaitForProgress(); }), "a callback does not wait for its connection");
        Require(!Succeeds([&] { api_.Disconnect(); }), "a callback does not disconnect");
        break;
      case CallbackAction::ThrowError:
        throw std::runtime_error("of a callback");
      case CallbackAction::ThrowAnything:
        throw 0;
      case CallbackAction::Register:
        events_.UnRegisterCallback(ListEventKind::ListDone, extra_);
        static_cast<void>(Succeeds([&] {
          extra_ =
              events_.RegisterCallback(ListEventKind::ListDone, [](std::int32_t connection, std::int32_t) {
                Require(connection == Handle, "a callback learns whose event it is");
              });
        }));
        break;
    }
  }

  // Waits for events as long as any can come.
  void TakeEvents() {
    const bool ends = plan_.Connection.End != Script::Ending::StaysOpen;
    for (const ListEventKind kind : Kinds) {
      const std::chrono::milliseconds timeout(ends ? LongTimeoutMs : 0);
      while (Succeeds([&] {
        if (!list_.Wait(kind, timeout)) throw std::runtime_error("no more");
      })) {
        ++taken_[Index(kind)];
      }
    }
  }

  // Nothing that was notified got lost on the way to the waits or to the callbacks.
  void CheckEvents() {
    for (const ListEventKind kind : Kinds) {
      while (Succeeds(
          [&] { Require(list_.Wait(kind, {}).has_value(), "a wait without end ends in an error"); })) {
        ++taken_[Index(kind)];
      }
      Require(taken_[Index(kind)] == called_[Index(kind)], "waits and callbacks get the same events");
    }
    Require(called_[0] + called_[1] + called_[2] >= expected_.Events, "an event reaches its callback");
    Require(events_.CheckAndClearError() == (errors_ > 0), "an error that was notified is kept");
  }

  const Plan& plan_;
  const Expectation expected_{plan_};
  // Counted on the receive thread, which has ended when they are looked at. Declared before the connection,
  // so that they are there as long as it is.
  std::array<std::size_t, ListEventKinds> called_{};
  std::size_t errors_ = 0;
  std::uint32_t extra_ = 0;

  std::size_t calls_ = 0;  // that are over

  std::array<std::size_t, ListEventKinds> taken_{};
  ClientAPI api_;
  ListEvents& events_ = api_.GetListEvents();
  ListAPI list_{api_, events_};
};

Card& TheCard() {
  static Card* const card = new Card;  // never deleted: its thread lives to the end
  return *card;
}

}  // namespace

}  // namespace VELTRO::KELVO::Fuzz

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  static VELTRO::KELVO::Fuzz::NullBuffer buffer;
  std::cout.rdbuf(&buffer);
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace VELTRO::KELVO::Fuzz;
  Cursor input(data, size);
  const Plan plan(input);
  Card& card = TheCard();
  card.Prepare(plan.Connection);
  Client(plan).Run(card);
  card.WaitUntilServed();
  return 0;
}
