#include "Handles.h"

#include <set>
#include <vector>

#include "Callbacks.h"
#include "Records.h"
#include "kelvo/kelvo.h"

namespace KelvoPython {
namespace {

// Never destroyed: what is collected while the process ends may still look. Guarded by the interpreter's lock.
std::set<Card*>& OpenCards() {
  static auto& cards = *new std::set<Card*>;
  return cards;
}
// Connections whose objects went where they could not be ended: in a callback.
std::vector<std::int32_t>& Left() {
  static auto& handles = *new std::vector<std::int32_t>;
  return handles;
}

}  // namespace

Card::Card(const py::object& host, std::int32_t port) {
  if (py::isinstance<py::str>(host)) {
    const auto name = host.cast<std::string>();
    where_ = name + ":" + std::to_string(port);
    const Unlocked unlocked;
    handle_ = vlConnect(name.c_str(), port);
  } else {
    vlCardInfo info{};
    ToC(RecordNamed("CardInfo"), host, &info, "host");
    where_ = info.SerialNumber;
    const Unlocked unlocked;
    handle_ = vlConnectByCardInfo(&info);
  }
  if (handle_ < 0) throw Error(LastError());
  open_ = true;
  OpenCards().insert(this);
}

Card::~Card() {
  if (!open_) return;
  OpenCards().erase(this);
  if (process_ != Process()) return;
  Warn();
  if (!Disconnect()) Left().push_back(handle_);
}

std::int32_t Card::Handle() const {
  if (process_ != Process()) throw Error("The connection belongs to another process.");
  return handle_;
}

void Card::Close() {
  Handle();
  if (!open_) return;
  if (!Disconnect()) throw Error(LastError());
}

bool Card::Disconnect() {
  open_ = false;
  std::int32_t result = 0;
  {
    const Unlocked unlocked;
    result = vlDisconnect(handle_);
  }
  open_ = result != 0;
  if (open_) return false;
  OpenCards().erase(this);
  ForgetCallbacks(handle_);
  return true;
}

void Card::Warn() const {
  if (PyErr_WarnFormat(PyExc_ResourceWarning, 1, "unclosed connection to %s", where_.c_str()) != 0) {
    PyErr_WriteUnraisable(nullptr);
  }
}

void Card::EndAll() {
  const std::set<Card*> open = OpenCards();
  for (Card* const card : open) {
    if (OpenCards().count(card) == 0 || card->process_ != Process()) continue;
    card->Warn();
    card->Disconnect();
  }
  for (const std::int32_t handle : Left()) {
    const Unlocked unlocked;
    vlDisconnect(handle);
  }
  Left().clear();
}

Owned::Owned(py::object card, std::int64_t handle, Release release)
    : card_(std::move(card)), handle_(handle), release_(release) {
  if (handle < 0) throw Error(LastError());
}

std::int64_t Owned::Handle() const {
  card_.cast<const Card&>().Handle();
  return handle_;
}

void Owned::Close() {
  const auto& card = card_.cast<const Card&>();
  const std::int64_t handle = std::exchange(handle_, -1);
  if (handle < 0 || card.IsClosed()) return;
  try {
    card.Handle();
  } catch (const Error&) {
    return;  // the list is the parent's
  }
  const Unlocked unlocked;
  release_(handle);
}

List::List(py::object card, std::int64_t handle) : Owned(std::move(card), handle, vlListReleaseHandle) {}
Font::Font(py::object card, std::int64_t handle) : Owned(std::move(card), handle, vlFontReleaseHandle) {}

}  // namespace KelvoPython
