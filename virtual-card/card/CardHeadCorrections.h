// The corrections of the scan heads: files in numbered slots, one of which each head uses.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "card/CardConfiguration.h"
#include "card/CardFiles.h"
#include "card/StateDirectory.h"
#include "common/Mutex.h"
#include "services/OpticalParameters.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. A slot is filled when its file is there, also when a client has put it there
// as a file. Whoever names a slot that there is not gets std::runtime_error "There is no head correction slot HEAD,
// SLOT.", and where a correction is needed "There is no head correction HEAD, SLOT.". Otherwise errors are those of
// CardFiles.
class CardHeadCorrections {
 public:
  static constexpr std::int32_t Heads = 2;
  static constexpr std::int32_t Slots = 8;

  // Takes the selection that was stored; none when it cannot be read, and says so on stderr.
  CardHeadCorrections(CardFiles& files, CardConfiguration& configuration, StateDirectory& state);

  bool Exists(std::int32_t head, std::int32_t slot);
  void Delete(std::int32_t head, std::int32_t slot);
  // Makes the file that was sent for the slot its correction.
  void Set(std::int32_t head, std::int32_t slot);
  void Select(std::int32_t head, std::int32_t slot);
  // -1 when there is none. Throws std::runtime_error "There is no scan head HEAD.".
  std::int32_t GetSelected(std::int32_t head);
  // The selection as it was stored, as far as its corrections are there. Throws as StateDirectory::Read, or
  // std::exception when what is stored is none.
  void Load();
  // Throws as StateDirectory::Write.
  void Store();

  // 16 hexadecimal digits: the 64-bit FNV-1a of the file. Throws also std::runtime_error "The file 'NAME' is too large."
  // for one that is no correction by its size.
  std::string GetHash(std::int32_t head, std::int32_t slot);
  // Those that the file is the JSON form of; of another file those of the scanner's configuration, with one layer for x
  // and y. The hash is that of the file.
  ClientLib::OpticalParameters GetParameters(std::int32_t head, std::int32_t slot);

 private:
  using Selection = std::array<std::int32_t, Heads>;

  std::string FileOf(std::int32_t head, std::int32_t slot);

  CardFiles& files_;
  CardConfiguration& configuration_;
  StateDirectory& state_;
  ClientLib::Mutex mutex_;
  Selection selected_ KELVO_GUARDED_BY(mutex_) = {-1, -1};
};

}  // namespace VELTRO::KELVO::VirtualCard
