// The names of a record's remote methods, from what they have in common: "LaserConfig" gives "GetLaserConfig" and so on.
#pragma once

#include <algorithm>
#include <array>
#include <string_view>

namespace VELTRO::KELVO::ClientLib {

// That is its WireName, unless the record says another RemoteName.
template <class R>
class RecordMethods {
  static constexpr std::string_view FindCommonName() {
    if constexpr (requires { R::RemoteName; }) {
      return R::RemoteName;
    } else {
      return R::WireName;
    }
  }

 public:
  static constexpr std::string_view CommonName = FindCommonName();

 private:
  template <std::size_t Size>
  static constexpr auto Join(const char (&verb)[Size]) {
    std::array<char, Size - 1 + CommonName.size()> name{};
    std::ranges::copy(CommonName, std::copy_n(verb, Size - 1, name.begin()));
    return name;
  }
  static constexpr auto get_ = Join("Get"), set_ = Join("Set");
  static constexpr auto load_ = Join("Load"), store_ = Join("Store");

 public:
  static constexpr std::string_view Get{get_.data(), get_.size()};
  static constexpr std::string_view Set{set_.data(), set_.size()};
  static constexpr std::string_view Load{load_.data(), load_.size()};
  static constexpr std::string_view Store{store_.data(), store_.size()};
};

}  // namespace VELTRO::KELVO::ClientLib
