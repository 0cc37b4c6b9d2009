// A frame as a line of a recorded session, and back.
//
//   {"time":0.001234,"connection":1,"way":"to card","kind":"request","id":5,"method":"ExecuteList","arguments":[1]}
//   {"time":0.001301,"connection":1,"way":"from card","kind":"response","id":5,"method":"ExecuteList","result":null}
//
// docs/session.md has all kinds.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "rpc/FrameTap.h"
#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib::Recording {

// What a line tells. In the file stand the words of KindWords, in this order.
enum class LineKind : std::uint8_t {
  Opened,             // a connection has begun
  Request,            // method and arguments
  Response,           // its result
  Error,              // an answer that is an error
  Notification,       // its values
  ErrorNotification,  // its error
  Raw,                // bytes that are no such frame
  Ended,              // the side that sends this way has closed; nothing more comes this way
  Missing,            // frames that could not be kept, or bytes that a capture lacks
};
inline constexpr std::string_view KindWords[] = {"opened", "request",      "response",
                                                 "error",  "notification", "error notification",
                                                 "raw",    "ended",        "missing"};
// By FrameWay.
inline constexpr std::string_view WayWords[] = {"to card", "from card"};

// Values of more bytes, long lists, stay packed: nobody reads them as text, and making that text takes longer than
// sending them.
inline constexpr std::size_t MostAsText = 32768;

// What every line begins with.
struct LineHead {
  std::chrono::microseconds Time{};  // since the recording began
  std::uint32_t Connection = 1;
  FrameWay Way = FrameWay::ToCard;
  LineKind Kind = LineKind::Request;
};

// Sessions ask the same and are answered the same again and again: the text of a value that comes again is kept.
class KnownValues {
 public:
  // Appends what was kept for such a value of such a call, if anything was.
  bool Append(std::string& text, std::string_view name, std::string_view method, std::span<const char> value);
  // To be called when there was nothing: keeps the text, if the value comes for the second time.
  void Keep(std::string_view name, std::string_view method, std::span<const char> value,
            std::string_view text);

 private:
  static constexpr std::size_t Places = 64;
  static constexpr std::size_t MostBytes = 128;  // of a value; more do not come again

  struct Known {
    std::size_t LatestHash = 0;
    std::string_view Name;
    std::string Method;
    std::string Value;
    std::string Text;
  };

  std::vector<Known> places_{Places};
  Known* place_ = nullptr;  // of the latest value; null when that cannot be kept
  bool comesAgain_ = false;
};

// Makes the lines of frames. It knows the requests that have not been answered, so an answer's line can tell its method.
// One thread at a time.
class LineMaker {
 public:
  // Without content the bytes and texts of files are left out.
  explicit LineMaker(bool hasContent) : hasContent_(hasContent) {}

  // Appends the line of a whole frame, line end included; of whatever else it is, as one of raw bytes. The head's kind is
  // not looked at.
  void AppendFrame(std::string& text, const LineHead& head, std::span<const unsigned char> frame);
  // Appends the line of what is no frame, by the head's kind: nothing, bytes, or how many frames are missing.
  void AppendOther(std::string& text, const LineHead& head, std::string_view bytes = {},
                   std::uint64_t missing = 0) const;
  // Appends the line of so many bytes that came that way and that nobody has.
  static void AppendMissingBytes(std::string& text, const LineHead& head, std::uint64_t bytes);

 private:
  using Place = std::uint64_t;  // connection and request id

  void AppendParsed(std::string& text, const LineHead& head, std::span<const unsigned char> frame);
  void AppendRequest(std::string& text, const LineHead& head, std::span<const char> body);
  void AppendAnswer(std::string& text, const LineHead& head, std::span<const char> body);

  void Ask(Place place, std::string_view method);
  // The method of what was asked there, and forgets it; nothing when nothing was.
  bool TakeAsked(Place place, std::string& method);

  // Nearly all answers come soon, so they are found without a search.
  struct Asked {
    Place Where = 0;
    bool IsOpen = false;
    std::string Method;
  };
  static constexpr std::size_t Slots = 1024;

  const bool hasContent_;
  KnownValues known_;
  std::vector<Asked> asked_{Slots};
  std::unordered_map<Place, std::string> askedBefore_;  // whose slot another has
  std::string method_;                                  // of the line that is being made
};

// Whether the call's arguments have what a file contains.
bool CarriesContent(std::string_view method);
// Puts nil in its place.
void LeaveOutContent(std::string_view method, msgpack::object& arguments);
// In place of a result that was left out, packed: as many bytes, of nothing.
std::string PackedFiller(std::string_view method, std::uint64_t size);

// A JSON object that was read, with the memory that it refers to.
struct Object {
  std::unique_ptr<const std::string> Bytes;
  msgpack::object_handle Handle;
  std::span<const msgpack::object_kv> All;

  const msgpack::object* Find(std::string_view name) const;
  // Throws std::runtime_error when there is none, or it is of another kind.
  template <class T>
  T Get(std::string_view name) const;
  // `otherwise` when there is none.
  template <class T>
  T Get(std::string_view name, T otherwise) const {
    return Find(name) == nullptr ? otherwise : Get<T>(name);
  }
};

// Throws std::runtime_error with what is wrong.
Object ReadObject(std::string_view text);

// Throws std::runtime_error: a member is not what it should be.
[[noreturn]] void RefuseMember(std::string_view name);

template <class T>
T Object::Get(std::string_view name) const {
  const msgpack::object* const value = Find(name);
  if (value == nullptr) RefuseMember(name);
  try {
    return value->as<T>();
  } catch (const msgpack::type_error&) {
    RefuseMember(name);
  }
}

// A line that was read.
struct Line {
  LineHead Head;
  std::uint32_t Id = 0;
  std::string Method;  // empty where it is not known
  // Arguments (an array), result, error or values, as the kind has it; nil where there is none.
  msgpack::object Content;
  std::string Raw;            // the bytes of Raw
  std::uint64_t Missing = 0;  // frames
  std::uint64_t MissingBytes = 0;
  std::uint64_t LeftOut = 0;  // bytes of a file, in whose place nil stands

  // What Content refers to.
  Object Whole;
  std::unique_ptr<const std::string> PackedBytes;
  msgpack::object_handle PackedObject;
};

// Reads one line, without its end. Throws std::runtime_error with what is wrong with it.
Line ReadLine(std::string_view text);

}  // namespace VELTRO::KELVO::ClientLib::Recording
