#include "methods/Requests.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <string_view>

#include "methods/MethodTable.h"
#include "rpc/InputPacket.h"
#include "rpc/LogText.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::InputPacket;
using ClientLib::OutputPacket;
using ClientLib::Packet;
using ClientLib::PacketType;
using ClientLib::RpcRemoteException;

namespace {

// A list is told by its length: nobody wants to read a million commands.
std::string Describe(const msgpack::object& argument) {
  if (argument.type == msgpack::type::ARRAY) {
    return "[" + std::to_string(argument.via.array.size) + " elements]";
  }
  return ClientLib::LogText(argument);
}

std::string Describe(std::string_view method, Arguments arguments) {
  std::string text(method);
  std::string_view separator = "(";
  for (const msgpack::object& argument : arguments) {
    text.append(separator).append(Describe(argument));
    separator = ", ";
  }
  return text + (arguments.empty() ? "()" : ")");
}

// There is no trace to tell of it. Without the empty one the client would put the text in its place, too.
OutputPacket ErrorAnswer(const InputPacket& request, const std::string& text) {
  OutputPacket answer = OutputPacket::AllocateResponse(request, RpcRemoteException(text, ""));
  answer.Close();
  return answer;
}

const char* TextOf(const std::exception& error) {
  const bool isMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  return isMemory ? "The card is out of memory." : error.what();
}

// Ends where anything else comes than an id and a name.
class HeadVisitor : public msgpack::null_visitor {
 public:
  FrameHead Head;

  bool visit_positive_integer(std::uint64_t id) {
    Head.Id = static_cast<std::uint32_t>(id);
    return true;
  }
  bool visit_str(const char* text, std::uint32_t size) {
    Head.Method = {text, size};
    return true;
  }
  bool start_array(std::uint32_t) { return false; }
  bool start_map(std::uint32_t) { return false; }
};

}  // namespace

std::optional<FrameHead> HeadOf(std::span<const unsigned char> frame) {
  if (frame.size() <= Packet::FullHeaderLen) return std::nullopt;
  const auto body = frame.subspan(Packet::FullHeaderLen);
  const char* const bytes = reinterpret_cast<const char*>(body.data());
  HeadVisitor visitor;
  std::size_t offset = 0;
  if (!msgpack::parse(bytes, body.size(), offset, visitor)) return std::nullopt;
  msgpack::parse(bytes, body.size(), offset, visitor);
  return visitor.Head;
}

std::optional<OutputPacket> Answer(CardClient& client, std::span<const unsigned char> frame,
                                   std::string* log) {
  InputPacket request = InputPacket::Allocate(frame.data(), 0, static_cast<int>(frame.size()));
  if (request.GetType() != PacketType::Request) throw std::runtime_error("A frame is no request.");
  const msgpack::object_handle name = request.Unpack();
  const msgpack::object_handle array =
      request.Unpack(SIZE_MAX);  // a request's length is bounded by its session
  if (name->type != msgpack::type::STR || array->type != msgpack::type::ARRAY || !request.Rest().empty()) {
    throw std::runtime_error("A request is not made of an id, a method name and an array of arguments.");
  }
  const std::string_view method(name->via.str.ptr, name->via.str.size);
  const Arguments arguments(array->via.array.ptr, array->via.array.size);
  if (log != nullptr) *log = Describe(method, arguments);
  CardCounters& counters = client.Owner.Counters;
  ++counters.Calls;
  try {
    OutputPacket answer = OutputPacket::AllocateResponse(request);
    if (!FindMethod(method).Call(client, arguments, answer)) return std::nullopt;
    answer.Close();
    return answer;
  } catch (const std::exception& error) {
    ++counters.FailedCalls;
    if (log != nullptr) log->append(" failed: ").append(TextOf(error));
    return ErrorAnswer(request, TextOf(error));
  }
}

OutputPacket Refuse(std::span<const unsigned char> frame, const std::string& reason) {
  return ErrorAnswer(InputPacket::Allocate(frame.data(), 0, static_cast<int>(frame.size())), reason);
}

}  // namespace VELTRO::KELVO::VirtualCard
