#include "card/StoredFiles.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <stdexcept>
#include <utility>

#include "base/Log.h"
#include "card/FileFailure.h"
#include "card/Fnv1a.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

constexpr std::size_t LeastBytes = 4096;

std::string_view WithoutHash(std::string_view bytes) {
  const std::size_t size = bytes.size() - std::min(bytes.size(), Fnv1a::Digits);
  if (bytes.substr(size) != Fnv1a().Add(bytes.substr(0, size)).Text()) {
    throw std::runtime_error("What is stored is damaged.");
  }
  return bytes.substr(0, size);
}

}  // namespace

void StoredFiles::Count(std::int32_t number, std::size_t bytes) {
  std::size_t& counted = bytes_[number];
  allBytes_ += bytes - std::exchange(counted, bytes);
  if (bytes == 0) bytes_.erase(number);
}

void StoredFiles::ReadAll(const std::function<void(std::int32_t number, std::string_view bytes)>& take) {
  if (!IsOnHost()) return;
  for (const std::string& name : state_.GetHost().GetNames()) {
    std::int32_t number = 0;
    if (name.starts_with(kind_ + "-")) {
      std::from_chars(name.data() + kind_.size() + 1, name.data() + name.size(), number);
    }
    if (name != NameOf(number)) continue;
    try {
      const std::string bytes = state_.Read(name, mostBytes_).value_or("");
      Count(number, std::max(bytes.size(), LeastBytes));
      take(number, WithoutHash(bytes));
    } catch (const std::exception& error) {
      LogLine("Not taking the stored " + name + ": " + error.what());
    }
  }
}

void StoredFiles::Write(std::int32_t number, const std::function<std::string()>& getBytes) {
  if (!IsOnHost()) return;
  std::string bytes = getBytes();
  bytes += Fnv1a().Add(bytes).Text();
  const std::size_t counted = std::max(bytes.size(), LeastBytes);
  const auto old = bytes_.find(number);
  const std::size_t others = allBytes_ - (old == bytes_.end() ? 0 : old->second);
  errno = EDQUOT;
  if (counted > mostBytes_ - std::min(mostBytes_, others)) ThrowCannot("write", NameOf(number));
  state_.Write(NameOf(number), bytes);
  Count(number, counted);
}

void StoredFiles::Remove(std::int32_t number) {
  if (!IsOnHost()) return;
  state_.GetHost().Remove(NameOf(number));
  Count(number, 0);
}

}  // namespace VELTRO::KELVO::VirtualCard
