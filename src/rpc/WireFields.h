// Plain structs on the wire: an array of exactly their fields. A struct with
//
//   template <class Self>
//   static auto WireFields(Self& self) { return std::tie(self.Name, self.DisplayName); }
//
// is an argument and a result of calls.
#pragma once

#include <tuple>

#include "rpc/MsgPack.h"

namespace msgpack {
MSGPACK_API_VERSION_NAMESPACE(MSGPACK_DEFAULT_API_NS) {
  namespace adaptor {

  template <class T>
  concept KelvoWireFields = requires(T& value) {
    T::WireFields(value);
  };

  template <KelvoWireFields T>
  struct pack<T> {
    template <class Stream>
    msgpack::packer<Stream>& operator()(msgpack::packer<Stream>& packer, const T& value) const {
      return packer.pack(T::WireFields(value));
    }
  };
  template <KelvoWireFields T>
  struct convert<T> {
    const msgpack::object& operator()(const msgpack::object& object, T& value) const {
      auto fields = T::WireFields(value);
      if (object.type != msgpack::type::ARRAY ||
          object.via.array.size != std::tuple_size_v<decltype(fields)>) {
        throw msgpack::type_error();
      }
      const msgpack::object* element = object.via.array.ptr;
      std::apply([&](auto&... field) { (element++->convert(field), ...); }, fields);
      return object;
    }
  };

  }  // namespace adaptor
}
}  // namespace msgpack
