#include "methods/Requests.h"

#include <stdexcept>
#include <string_view>

#include "methods/MethodTable.h"
#include "rpc/InputPacket.h"
#include "rpc/LogText.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::InputPacket;
using ClientLib::OutputPacket;
using ClientLib::PacketType;

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

}  // namespace

OutputPacket Answer(CardClient& client, std::span<const unsigned char> frame, std::string* log) {
  InputPacket request = InputPacket::Allocate(frame.data(), 0, static_cast<int>(frame.size()));
  if (request.GetType() != PacketType::Request) throw std::runtime_error("A frame is no request.");
  const msgpack::object_handle name = request.Unpack();
  const msgpack::object_handle array = request.Unpack();
  if (name->type != msgpack::type::STR || array->type != msgpack::type::ARRAY || !request.Rest().empty()) {
    throw std::runtime_error("A request is not made of an id, a method name and an array of arguments.");
  }
  const std::string_view method(name->via.str.ptr, name->via.str.size);
  const Arguments arguments(array->via.array.ptr, array->via.array.size);
  if (log != nullptr) *log = Describe(method, arguments);
  try {
    OutputPacket answer = OutputPacket::AllocateResponse(request);
    FindMethod(method).Call(client, arguments, answer);
    answer.Close();
    return answer;
  } catch (const std::exception& error) {
    if (log != nullptr) log->append(" failed: ").append(error.what());
    OutputPacket answer = OutputPacket::AllocateResponse(request, error);
    answer.Close();
    return answer;
  }
}

}  // namespace VELTRO::KELVO::VirtualCard
