// An error that the card reports, with the chain of errors behind it.
#pragma once

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

class OutputPacket;

// The chain is kept as one flat, shared sequence: a chain of any depth is made, printed and destroyed without
// recursion, and a copy of the exception never throws.
class RpcRemoteException : public std::runtime_error {
 public:
  explicit RpcRemoteException(std::string text, std::optional<std::string> stackTrace = std::nullopt);
  // The same with `inner` as the error behind it.
  RpcRemoteException(std::string text, std::optional<std::string> stackTrace,
                     const RpcRemoteException& inner);

  // Converts a remote error from the wire: an array of at least three elements, of which the first is the
  // text, the second the stack trace or nil, the last the inner error of the same shape or nil. A nil object
  // gives an exception with empty members. Throws msgpack::type_error for any other shape.
  static RpcRemoteException FromObject(const msgpack::object& object);

  // Packs the error and all behind it.
  void Pack(OutputPacket& packet) const;

  const std::string& GetText() const { return First().Text; }
  // The error behind this one.
  std::optional<RpcRemoteException> GetInner() const;
  // The card's second text, or, where it sent none, the texts of the whole chain, a line each.
  const std::string& GetStackTrace() const { return *stackTrace_; }

  // The composed description: the error text, the inner errors a line each, and the stack trace, under their
  // heads. A zero byte in them is shown as "\0", so that the text does not end there.
  const char* what() const noexcept override { return description_->c_str(); }
  // "Rpc remote exception occurred".
  const char* base_what() const noexcept { return std::runtime_error::what(); }

 private:
  struct Link {
    std::string Text;
    std::optional<std::string> Second;
  };
  using Chain = std::vector<Link>;

  RpcRemoteException(std::shared_ptr<const Chain> chain, std::size_t first);

  const Link& First() const { return (*chain_)[first_]; }
  // The texts of the chain from link `from` on, one line each.
  std::string CollectText(std::size_t from) const;
  // Rebuilds the description from the members.
  void init_what();

  std::shared_ptr<const Chain> chain_;
  std::size_t first_ = 0;  // this error's link; the ones behind it are the inner errors
  std::shared_ptr<const std::string> stackTrace_;
  std::shared_ptr<const std::string> description_;
};

}  // namespace VELTRO::KELVO::ClientLib
