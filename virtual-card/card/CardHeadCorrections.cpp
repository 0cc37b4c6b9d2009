#include "card/CardHeadCorrections.h"

#include <stdexcept>

#include "base/Log.h"
#include "card/Fnv1a.h"
#include "card/OpenFile.h"
#include "card/StoredForm.h"
#include "services/CorrectionFiles.h"

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::MutexLock;
using ClientLib::OpticalParameters;
using ClientLib::CorrectionFiles::Directory;

namespace {

constexpr const char* StoredName = "HeadCorrections";
constexpr std::size_t MostJsonBytes = 1 << 20;

std::string Place(std::int32_t head, std::int32_t slot) {
  return std::to_string(head) + ", " + std::to_string(slot) + ".";
}

void CheckSlot(std::int32_t head, std::int32_t slot) {
  if (head < 0 || head >= CardHeadCorrections::Heads || slot < 0 || slot >= CardHeadCorrections::Slots) {
    throw std::runtime_error("There is no head correction slot " + Place(head, slot));
  }
}

}  // namespace

CardHeadCorrections::CardHeadCorrections(CardFiles& files, CardConfiguration& configuration,
                                         StateDirectory& state)
    : files_(files), configuration_(configuration), state_(state) {
  try {
    Load();
  } catch (const std::exception& error) {
    LogLine(std::string("Selecting no head corrections: ") + error.what());
  }
}

std::string CardHeadCorrections::FileOf(std::int32_t head, std::int32_t slot) {
  if (!Exists(head, slot)) throw std::runtime_error("There is no head correction " + Place(head, slot));
  return ClientLib::CorrectionFiles::HeadCorrection(head, slot);
}

bool CardHeadCorrections::Exists(std::int32_t head, std::int32_t slot) {
  CheckSlot(head, slot);
  return files_.Exists(Directory, ClientLib::CorrectionFiles::HeadCorrection(head, slot));
}

void CardHeadCorrections::Delete(std::int32_t head, std::int32_t slot) {
  files_.Delete(Directory, FileOf(head, slot));
  const MutexLock lock(mutex_);
  auto& selected = selected_[static_cast<std::size_t>(head)];
  if (selected == slot) selected = -1;
}

void CardHeadCorrections::Set(std::int32_t head, std::int32_t slot) {
  CheckSlot(head, slot);
  files_.Rename(Directory, ClientLib::CorrectionFiles::HeadCorrectionCopy(head, slot),
                ClientLib::CorrectionFiles::HeadCorrection(head, slot));
}

void CardHeadCorrections::Select(std::int32_t head, std::int32_t slot) {
  FileOf(head, slot);
  const MutexLock lock(mutex_);
  selected_[static_cast<std::size_t>(head)] = slot;
}

std::int32_t CardHeadCorrections::GetSelected(std::int32_t head) {
  if (head < 0 || head >= Heads) {
    throw std::runtime_error("There is no scan head " + std::to_string(head) + ".");
  }
  const MutexLock lock(mutex_);
  return selected_[static_cast<std::size_t>(head)];
}

void CardHeadCorrections::Load() {
  const auto bytes = state_.Read(StoredName);
  Selection stored = bytes ? FromStored<Selection>(*bytes) : Selection{-1, -1};
  for (std::int32_t head = 0; head < Heads; ++head) {
    auto& slot = stored[static_cast<std::size_t>(head)];
    if (slot != -1 && !Exists(head, slot)) slot = -1;
  }
  const MutexLock lock(mutex_);
  selected_ = stored;
}

void CardHeadCorrections::Store() {
  Selection selected;
  {
    const MutexLock lock(mutex_);
    selected = selected_;
  }
  state_.Write(StoredName, ToStored(selected));
}

std::string CardHeadCorrections::GetHash(std::int32_t head, std::int32_t slot) {
  const std::string name = FileOf(head, slot);
  const auto file = files_.Open(Directory, name, ClientLib::FileMode::Open);
  if (file->GetSize() > ClientLib::CorrectionFiles::MostHeadCorrectionBytes) {
    throw std::runtime_error("The file '" + name + "' is too large.");
  }
  Fnv1a hash;
  for (OpenFile::Bytes bytes; !(bytes = file->Read(OpenFile::MostBytes)).empty();) {
    hash.Add({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
  }
  return hash.Text();
}

OpticalParameters CardHeadCorrections::GetParameters(std::int32_t head, std::int32_t slot) {
  OpticalParameters parameters;
  try {
    parameters = OpticalParameters::FromJsonText(files_.Read(Directory, FileOf(head, slot), MostJsonBytes));
  } catch (const std::exception&) {  // it is something else
    const ClientLib::ScannerConfig scanner = configuration_.Scanner.Get();
    parameters.HeadFormat = scanner.HeadFormat;
    parameters.FieldSize = scanner.FieldSize;
    parameters.MaxMagnification = scanner.MaxMagnification;
    parameters.XLayers = parameters.YLayers = 1;
    parameters.InputScale = {{1, 1, 1, 1}};
  }
  parameters.ConfigVersion = OpticalParameters::CurrentConfigVersion;
  parameters.Hash = GetHash(head, slot);
  return parameters;
}

}  // namespace VELTRO::KELVO::VirtualCard
