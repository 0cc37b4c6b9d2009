#include "rpc/RpcRemoteException.h"

#include <algorithm>

#include "rpc/OutputPacket.h"

namespace VELTRO::KELVO::ClientLib {

namespace {

std::string TextOf(const msgpack::object& object) {
  if (object.type == msgpack::type::STR) return {object.via.str.ptr, object.via.str.size};
  if (object.type == msgpack::type::BIN) return {object.via.bin.ptr, object.via.bin.size};
  throw msgpack::type_error();
}

// Callers get the description as far as its first zero byte: those that the card sent are shown as "\0".
std::string WithZerosShown(std::string text) {
  if (std::count(text.begin(), text.end(), '\0') == 0) return text;
  std::string shown;
  for (const char c : text) c == '\0' ? shown.append("\\0") : shown.append(1, c);
  return shown;
}

}  // namespace

RpcRemoteException::RpcRemoteException(std::shared_ptr<const Chain> chain, std::size_t first)
    : std::runtime_error("Rpc remote exception occurred"), chain_(std::move(chain)), first_(first) {
  init_what();
}

RpcRemoteException::RpcRemoteException(std::string text, std::optional<std::string> stackTrace)
    : RpcRemoteException(std::make_shared<Chain>(Chain{{std::move(text), std::move(stackTrace)}}), 0) {}

RpcRemoteException::RpcRemoteException(std::string text, std::optional<std::string> stackTrace,
                                       const RpcRemoteException& inner)
    : RpcRemoteException(
          [&] {
            auto chain = std::make_shared<Chain>(Chain{{std::move(text), std::move(stackTrace)}});
            chain->insert(chain->end(), inner.chain_->begin() + static_cast<std::ptrdiff_t>(inner.first_),
                          inner.chain_->end());
            return chain;
          }(),
          0) {}

RpcRemoteException RpcRemoteException::FromObject(const msgpack::object& object) {
  auto chain = std::make_shared<Chain>();
  for (const msgpack::object* link = &object; !link->is_nil();) {
    if (link->type != msgpack::type::ARRAY || link->via.array.size < 3) throw msgpack::type_error();
    const auto& elements = link->via.array;
    const msgpack::object& second = elements.ptr[1];
    chain->push_back({TextOf(elements.ptr[0]),
                      second.is_nil() ? std::nullopt : std::optional<std::string>(TextOf(second))});
    link = &elements.ptr[elements.size - 1];
  }
  if (chain->empty()) chain->push_back({std::string(), std::string()});
  return {std::move(chain), 0};
}

void RpcRemoteException::Pack(OutputPacket& packet) const {
  msgpack::packer packer(packet);
  for (std::size_t i = first_; i < chain_->size(); ++i) {
    const Link& link = (*chain_)[i];
    packer.pack_array(3);
    packer.pack(link.Text);
    packer.pack(link.Second);
  }
  packer.pack_nil();  // behind the last error stands none
}

std::optional<RpcRemoteException> RpcRemoteException::GetInner() const {
  if (first_ + 1 == chain_->size()) return std::nullopt;
  return RpcRemoteException(chain_, first_ + 1);
}

std::string RpcRemoteException::CollectText(std::size_t from) const {
  std::string text;
  for (std::size_t i = from; i < chain_->size(); ++i) {
    const Link& link = (*chain_)[i];
    text += link.Text;
    text += ": ";
    if (link.Second) text += *link.Second;
    text += '\n';
  }
  return text;
}

void RpcRemoteException::init_what() {
  stackTrace_ = std::make_shared<std::string>(First().Second ? *First().Second : CollectText(first_));
  std::string text = "BeginException------------------------------------\n";
  text += First().Text;
  text += "\nInnerException------------------------------------\n";
  text += CollectText(first_ + 1);
  text += "StackTrace----------------------------------------\n";
  text += *stackTrace_;
  if (!stackTrace_->ends_with('\n')) text += '\n';
  text += "EndException--------------------------------------";
  description_ = std::make_shared<std::string>(WithZerosShown(std::move(text)));
}

}  // namespace VELTRO::KELVO::ClientLib
