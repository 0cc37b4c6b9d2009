#include "card/Notifier.h"
#include "rpc/MsgPack.h"
#include "rpc/OutputPacket.h"
#include "rpc/RpcEvents.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::OutputPacket;
using ClientLib::RpcEventType;

void Notifier::NotifyEvent(std::string_view name, std::int32_t event, std::int32_t value) {
  OutputPacket packet = OutputPacket::AllocateNotification();
  msgpack::packer packer(packet);
  packer.pack_array(2).pack(event).pack(value);
  const auto frame = packet.Close();
  // First, so that whoever has been told finds it counted.
  if (IsShown()) activity_->AddNotification(std::string(name).append(" ").append(std::to_string(value)));
  ++count_;
  Notify(frame);
}

void Notifier::NotifyProgress(std::int32_t value) {
  NotifyEvent("Progress", RpcEventType::Progress, value);
}

void Notifier::NotifyListDone(std::int32_t listId) {
  NotifyEvent("List done", RpcEventType::ListDone, listId);
}

void Notifier::NotifyListIdle(std::int32_t listId) {
  NotifyEvent("List idle", RpcEventType::ListIdle, listId);
}

void Notifier::NotifyError(const std::string& text) {
  OutputPacket packet = OutputPacket::AllocateErrorNotification();
  // With an empty trace: clients would put the text in the place of one that is missing, too.
  ClientLib::RpcRemoteException(text, "").Pack(packet);
  const auto frame = packet.Close();
  if (IsShown()) activity_->AddNotification("Error: " + text);
  ++count_;
  Notify(frame);
}

}  // namespace VELTRO::KELVO::VirtualCard
