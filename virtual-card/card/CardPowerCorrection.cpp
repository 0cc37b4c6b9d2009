#include "card/CardPowerCorrection.h"

#include <cmath>
#include <stdexcept>
#include <tuple>
#include <utility>
#include <vector>

#include "base/Log.h"
#include "card/StoredForm.h"
#include "config/RecordWire.h"
#include "services/CorrectionFiles.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;
using ClientLib::OpticalParameters;
using ClientLib::CorrectionFiles::Directory;
using ClientLib::CorrectionFiles::PowerCorrection;
using ClientLib::CorrectionFiles::PowerCorrectionCopy;

namespace {

constexpr const char* Mark = "KELVO power correction";

using File = std::tuple<std::string, OpticalParameters, std::vector<std::array<double, 4>>>;

bool IsFinite(const std::array<double, 4>& point) {
  return std::isfinite(point[0]) && std::isfinite(point[1]) && std::isfinite(point[2]) &&
         std::isfinite(point[3]);
}

}  // namespace

CardPowerCorrection::CardPowerCorrection(CardFiles& files) : files_(files) {
  try {
    if (files_.Exists(Directory, PowerCorrection)) Load();
  } catch (const std::exception& error) {
    LogLine(std::string("Taking no power correction: ") + error.what());
  }
}

CardPowerCorrection::Table& CardPowerCorrection::Active() {
  if (!active_) throw std::runtime_error("There is no power correction on the card.");
  return *active_;
}

void CardPowerCorrection::Create(OpticalParameters parameters) {
  const MutexLock lock(mutex_);
  active_ = Table{std::move(parameters), {}};
}

void CardPowerCorrection::ChangeValue(const ClientLib::Point3D& position, double value) {
  if (!IsFinite({position.X(), position.Y(), position.Z(), value})) {
    throw std::runtime_error("The power correction has no finite place and value there.");
  }
  const MutexLock lock(mutex_);
  Table& table = Active();
  if (table.Points.size() >= MostPoints && !table.Points.contains(position.Coordinates)) {
    throw std::runtime_error("The power correction has too many points.");
  }
  table.Points[position.Coordinates] = value;
}

OpticalParameters CardPowerCorrection::GetParameters() {
  const MutexLock lock(mutex_);
  return Active().Parameters;
}

std::string CardPowerCorrection::Pack() {
  const Table& table = Active();
  std::vector<std::array<double, 4>> points;
  for (const auto& [place, value] : table.Points) points.push_back({place[0], place[1], place[2], value});
  std::string file = ToStored(std::tie(Mark, table.Parameters, points));
  if (file.size() > MostFileBytes) throw std::runtime_error("The power correction is too large.");
  return file;
}

CardPowerCorrection::Table CardPowerCorrection::ReadTable(const char* name) {
  const std::string bytes = files_.Read(Directory, name, MostFileBytes);
  Table table;
  try {
    const auto file = FromStored<File>(bytes);
    bool isSound = std::get<0>(file) == Mark && std::get<2>(file).size() <= MostPoints;
    table.Parameters = std::get<1>(file);
    for (const auto& point : std::get<2>(file)) {
      isSound = isSound && IsFinite(point);
      table.Points[{point[0], point[1], point[2]}] = point[3];
    }
    if (isSound) return table;
  } catch (const std::exception&) {  // of whatever kind: it is no such file
    table = {};
  }
  throw std::runtime_error(std::string("'") + name + "' is no power correction.");
}

void CardPowerCorrection::Store() {
  const MutexLock lock(mutex_);
  files_.Replace(Directory, PowerCorrection, Pack());
}

void CardPowerCorrection::Load() {
  Table table = ReadTable(PowerCorrection);
  const MutexLock lock(mutex_);
  active_ = std::move(table);
}

void CardPowerCorrection::PutCopy() {
  const MutexLock lock(mutex_);
  if (active_) files_.Replace(Directory, PowerCorrectionCopy, Pack());
}

void CardPowerCorrection::TakeCopy() {
  Table table = ReadTable(PowerCorrectionCopy);
  files_.Delete(Directory, PowerCorrectionCopy);
  const MutexLock lock(mutex_);
  active_ = std::move(table);
}

}  // namespace VELTRO::KELVO::VirtualCard
