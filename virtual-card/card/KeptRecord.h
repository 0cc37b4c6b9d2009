// A configuration record as the card keeps it: an active copy, a stored one, and, while settings are being grouped,
// one that is to become active.
#pragma once

#include <exception>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "base/Log.h"
#include "card/StateDirectory.h"
#include "card/StoredForm.h"
#include "common/Mutex.h"
#include "config/RecordMethods.h"
#include "config/RecordWire.h"

namespace VELTRO::KELVO::VirtualCard {

// What takes part in a group of settings. Nothing of it throws.
class UpdateParticipant {
 public:
  virtual ~UpdateParticipant() = default;
  virtual void BeginUpdate() = 0;
  // What has been set since takes effect, or is dropped.
  virtual void EndUpdate(bool keep) = 0;
  // Makes the defaults active, or what becomes active when the group ends.
  virtual void Reset() = 0;
  // Whether what was stored could be read when the card started.
  virtual bool IsSound() const = 0;
};

// Any thread may call anything at any time.
template <class R>
class KeptRecord : public UpdateParticipant {
 public:
  using Content = R;
  // What its methods have in common, and the file in which it is stored.
  static constexpr std::string_view Name = ClientLib::RecordMethods<R>::CommonName;

  // Throws what a client is told that sets a record which the card cannot take.
  using Check = void (*)(const R&);

  // Takes what was stored under the record's name as the active one, too; the defaults when it cannot be read, and
  // says so on stderr.
  explicit KeptRecord(
      StateDirectory& directory, Check check = [](const R&) {})
      : directory_(directory), check_(check) {
    try {
      Load();
    } catch (const std::exception& error) {
      sound_ = false;
      LogLine({"Taking the defaults for the stored ", Name, ": ", error.what()});
    }
  }

  // Calls `follower` with the active record, now and whenever it has become another. It must neither throw nor use the
  // record. Once, before others use it.
  void Follow(std::function<void(const R&)> follower) {
    const ClientLib::MutexLock lock(mutex_);
    follower_ = std::move(follower);
    TellFollower();
  }
  R Get() {
    const ClientLib::MutexLock lock(mutex_);
    return active_;
  }
  // Sets the active record, or what becomes it when the group of settings ends. Throws as the check does, or
  // std::runtime_error "The record is too large." for one that could not be stored.
  void Set(R record) {
    check_(record);
    if (ToStored(record).size() > StateDirectory::MostBytes)
      throw std::runtime_error("The record is too large.");
    const ClientLib::MutexLock lock(mutex_);
    (pending_ ? *pending_ : active_) = std::move(record);
    if (!pending_) TellFollower();
  }
  // The same for a part of it: `change` gets the record to be changed.
  template <class Change>
  void Edit(Change&& change) {
    const ClientLib::MutexLock lock(mutex_);
    change(pending_ ? *pending_ : active_);
    if (!pending_) TellFollower();
  }
  // What is stored, or without it the defaults. Throws as StateDirectory::Read, as the check, or std::exception when
  // what is stored is no such record.
  void Load() { Set(Stored()); }
  // Throws as StateDirectory::Write.
  void Store() {
    const ClientLib::MutexLock storing(storing_);  // so that the latest is what stays
    directory_.Write(std::string(Name), ToStored(Get()));
  }

  void BeginUpdate() override {
    const ClientLib::MutexLock lock(mutex_);
    pending_ = active_;
  }
  void EndUpdate(bool keep) override {
    const ClientLib::MutexLock lock(mutex_);
    const bool isChanged = keep && pending_;
    if (isChanged) active_ = std::move(*pending_);
    pending_.reset();
    if (isChanged) TellFollower();
  }
  void Reset() override { Set(R()); }
  bool IsSound() const override { return sound_; }

 private:
  void TellFollower() KELVO_REQUIRES(mutex_) {
    if (follower_) follower_(active_);
  }
  R Stored() {
    const auto bytes = directory_.Read(std::string(Name));
    return bytes ? FromStored<R>(*bytes) : R();
  }

  StateDirectory& directory_;
  const Check check_;
  bool sound_ = true;
  ClientLib::Mutex storing_;  // ahead of mutex_
  ClientLib::Mutex mutex_;
  R active_ KELVO_GUARDED_BY(mutex_);
  std::optional<R> pending_ KELVO_GUARDED_BY(mutex_);
  std::function<void(const R&)> follower_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
