// The correction of laser power over the field: kept, given back, and exchanged as a file.
#pragma once

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "card/CardFiles.h"
#include "common/Mutex.h"
#include "common/Point.h"
#include "services/OpticalParameters.h"

namespace VELTRO::KELVO::VirtualCard {

// Any thread may call anything at any time. Without a correction what needs one throws std::runtime_error "There is no
// power correction on the card.". Otherwise errors are those of CardFiles.
//
// A file of it is one MessagePack array of three: the text "KELVO power correction", the optical parameters as they
// travel, and an array that has for each point x, y, z and the value.
class CardPowerCorrection {
 public:
  static constexpr std::size_t MostFileBytes = 16 << 20;

  // Takes the correction that was stored; none when it cannot be read, and says so on stderr.
  explicit CardPowerCorrection(CardFiles& files);

  // A correction without points.
  void Create(ClientLib::OpticalParameters parameters);
  // Throws also std::runtime_error "The power correction has no finite place and value there." or "The power correction
  // has too many points.".
  void ChangeValue(const ClientLib::Point3D& position, double value);
  ClientLib::OpticalParameters GetParameters();
  // Throws also std::runtime_error "The power correction is too large." for one that could not be read back.
  void Store();
  // Throws also std::runtime_error "'NAME' is no power correction.".
  void Load();
  // Makes the working copy; nothing without a correction. Throws as Store.
  void PutCopy();
  // Takes the working copy, which goes then. Throws as Load.
  void TakeCopy();

 private:
  static constexpr std::size_t MostPoints = 200000;

  struct Table {
    ClientLib::OpticalParameters Parameters;
    std::map<std::array<double, 3>, double> Points;
  };

  std::string Pack() KELVO_REQUIRES(mutex_);
  Table ReadTable(const char* name);
  Table& Active() KELVO_REQUIRES(mutex_);

  CardFiles& files_;
  ClientLib::Mutex mutex_;
  std::optional<Table> active_ KELVO_GUARDED_BY(mutex_);
};

}  // namespace VELTRO::KELVO::VirtualCard
