// Records on the wire: one array of the fields, without keys; the version is one of the elements. The peer is
// not trusted: the number and kind of the elements and the values of enumerations are checked.
#pragma once

#include <bit>
#include <cstdint>
#include <map>
#include <span>
#include <stdexcept>
#include <vector>

#include "common/Point.h"
#include "common/Transform3D.h"
#include "config/Record.h"
#include "rpc/PackDouble.h"
#include "rpc/SignatureCheck.h"

namespace VELTRO::KELVO::ClientLib::RecordWire {

inline std::span<const msgpack::object> ElementsOf(const msgpack::object& object) {
  if (object.type != msgpack::type::ARRAY) throw msgpack::type_error();
  return {object.via.array.ptr, object.via.array.size};
}

// Exactly as many elements.
inline std::span<const msgpack::object> ElementsOf(const msgpack::object& object, std::size_t count) {
  const auto elements = ElementsOf(object);
  if (elements.size() != count) throw msgpack::type_error();
  return elements;
}

// What msgpack knows how to convert by itself.
template <class T>
struct Element {
  static void Pack(auto& packer, const T& value) { packer.pack(value); }
  static void Unpack(const msgpack::object& object, T& value) { object.convert(value); }
};

template <>
struct Element<double> {
  static void Pack(auto& packer, double value) { PackDouble(packer, value); }
  static void Unpack(const msgpack::object& object, double& value) { object.convert(value); }
};

template <class T>
requires IsReflectiveEnum<T>
struct Element<T> {
  static void Pack(auto& packer, const T& value) { packer.pack(value._to_integral()); }
  static void Unpack(const msgpack::object& object, T& value) {
    value = T::_from_integral(object.as<std::int32_t>());
  }
};

template <std::size_t N>
struct Element<std::array<double, N>> {
  static void Pack(auto& packer, const std::array<double, N>& values) {
    packer.pack_array(N);
    for (const double value : values) Element<double>::Pack(packer, value);
  }
  static void Unpack(const msgpack::object& object, std::array<double, N>& values) {
    const auto elements = ElementsOf(object, N);
    for (std::size_t i = 0; i < N; ++i) elements[i].convert(values[i]);
  }
};

template <std::size_t N>
struct Element<Point<N, double>> {
  static void Pack(auto& packer, const Point<N, double>& point) {
    Element<std::array<double, N>>::Pack(packer, point.Coordinates);
  }
  static void Unpack(const msgpack::object& object, Point<N, double>& point) {
    Element<std::array<double, N>>::Unpack(object, point.Coordinates);
  }
};

template <>
struct Element<Transform3D> {
  static void Pack(auto& packer, const Transform3D& transform) {
    packer.pack_array(2);
    Element<std::array<double, 9>>::Pack(packer, transform.A);
    Element<std::array<double, 3>>::Pack(packer, transform.B);
  }
  static void Unpack(const msgpack::object& object, Transform3D& transform) {
    const auto elements = ElementsOf(object, 2);
    Element<std::array<double, 9>>::Unpack(elements[0], transform.A);
    Element<std::array<double, 3>>::Unpack(elements[1], transform.B);
  }
};

template <class T>
struct Element<std::vector<T>> {
  static void Pack(auto& packer, const std::vector<T>& values) {
    packer.pack_array(static_cast<std::uint32_t>(values.size()));
    for (const T& value : values) Element<T>::Pack(packer, value);
  }
  static void Unpack(const msgpack::object& object, std::vector<T>& values) {
    values.clear();
    for (const msgpack::object& element : ElementsOf(object)) {
      Element<T>::Unpack(element, values.emplace_back(Blank<T>()));
    }
  }
};

// A map, in the order of its keys; of a key that comes twice, the last counts.
template <class Key, class T>
struct Element<std::map<Key, T>> {
  static void Pack(auto& packer, const std::map<Key, T>& values) {
    packer.pack_map(static_cast<std::uint32_t>(values.size()));
    for (const auto& [key, value] : values) {
      Element<Key>::Pack(packer, key);
      Element<T>::Pack(packer, value);
    }
  }
  static void Unpack(const msgpack::object& object, std::map<Key, T>& values) {
    if (object.type != msgpack::type::MAP) throw msgpack::type_error();
    values.clear();
    for (const msgpack::object_kv& entry : std::span(object.via.map.ptr, object.via.map.size)) {
      Key key = Blank<Key>();
      Element<Key>::Unpack(entry.key, key);
      Element<T>::Unpack(entry.val, values.insert_or_assign(std::move(key), Blank<T>()).first->second);
    }
  }
};

// A group without a version.
template <HasFields T>
struct Element<T> {
  static void Pack(auto& packer, const T& group) {
    packer.pack_array(static_cast<std::uint32_t>(T::FieldCount));
    T::ForEachField(group, [&](const char*, const auto& field) {
      Element<std::remove_cvref_t<decltype(field)>>::Pack(packer, field);
    });
  }
  static void Unpack(const msgpack::object& object, T& group) {
    auto element = ElementsOf(object, T::FieldCount).begin();
    T::ForEachField(group, [&](const char*, auto& field) {
      Element<std::remove_cvref_t<decltype(field)>>::Unpack(*element++, field);
    });
  }
};

template <IsRecord T>
struct Element<T> {
  static void Pack(auto& packer, const T& record) {
    packer.pack_array(static_cast<std::uint32_t>(T::FieldCount + 1));
    std::size_t place = 0;
    const auto packVersion = [&] {
      if (place++ == T::VersionPlace) packer.pack(record.ConfigVersion);
    };
    packVersion();
    T::ForEachField(record, [&](const char*, const auto& field) {
      Element<std::remove_cvref_t<decltype(field)>>::Pack(packer, field);
      packVersion();
    });
  }
  static void Unpack(const msgpack::object& object, T& record) {
    const auto elements = ElementsOf(object, T::FieldCount + 1);
    T received;
    const auto version = elements[T::VersionPlace].template as<std::int32_t>();
    if (version > received.GetConfigVersion()) {
      throw std::runtime_error(
          "The Version of the supplied config is newer than the newest supported version.");
    }
    std::size_t place = 0;
    T::ForEachField(received, [&](const char*, auto& field) {
      if (place == T::VersionPlace) ++place;
      Element<std::remove_cvref_t<decltype(field)>>::Unpack(elements[place++], field);
    });
    received.ConfigVersion = version;
    record = std::move(received);
  }
};

}  // namespace VELTRO::KELVO::ClientLib::RecordWire

namespace VELTRO::KELVO::ClientLib {

template <>
inline constexpr std::string_view WireName<Point3D> = "point";
template <>
inline constexpr std::string_view WireName<Transform3D> = "transform";

}  // namespace VELTRO::KELVO::ClientLib

// So that records are arguments and results of calls like anything else.
namespace msgpack {
MSGPACK_API_VERSION_NAMESPACE(MSGPACK_DEFAULT_API_NS) {
  namespace adaptor {

  template <class T>
  concept KelvoElement =
      VELTRO::KELVO::ClientLib::HasFields<T> || std::is_same_v<T, VELTRO::KELVO::ClientLib::Transform3D> ||
      std::is_same_v<T, VELTRO::KELVO::ClientLib::Point3D>;

  template <KelvoElement T>
  struct pack<T> {
    template <class Stream>
    msgpack::packer<Stream>& operator()(msgpack::packer<Stream>& packer, const T& value) const {
      VELTRO::KELVO::ClientLib::RecordWire::Element<T>::Pack(packer, value);
      return packer;
    }
  };
  template <KelvoElement T>
  struct convert<T> {
    const msgpack::object& operator()(const msgpack::object& object, T& value) const {
      VELTRO::KELVO::ClientLib::RecordWire::Element<T>::Unpack(object, value);
      return object;
    }
  };

  }  // namespace adaptor
}
}  // namespace msgpack
