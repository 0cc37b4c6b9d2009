// What the table is made of that generate.py writes: the functions of C, and how Python calls them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace KelvoPython {

// ---- Functions ----

// An argument on its way to C: which member counts, the function's own parameter says.
union Slot {
  std::int64_t Integer;
  double Real;
  void* Pointer;
};

// A function of C whose parameters are in slots.
struct Entry {
  using Any = void (*)();
  Any Function;
  std::int64_t (*Call)(Any function, const Slot* slots);

  std::int64_t operator()(const Slot* slots) const { return Call(Function, slots); }
};

template <class T>
T FromSlot(const Slot& slot) {
  if constexpr (std::is_floating_point_v<T>) {
    return slot.Real;
  } else if constexpr (std::is_function_v<std::remove_pointer_t<T>>) {
    return reinterpret_cast<T>(slot.Pointer);
  } else if constexpr (std::is_pointer_v<T>) {
    return static_cast<T>(slot.Pointer);
  } else {
    return static_cast<T>(slot.Integer);
  }
}

// One instantiation a signature, not one a function.
template <class Result, class... Parameters>
Entry Of(Result (*function)(Parameters...)) {
  return {reinterpret_cast<Entry::Any>(function), [](Entry::Any any, const Slot* slots) {
            return [&]<std::size_t... I>(std::index_sequence<I...>) {
              const auto typed = reinterpret_cast<Result (*)(Parameters...)>(any);
              return static_cast<std::int64_t>(typed(FromSlot<Parameters>(slots[I])...));
            }
            (std::index_sequence_for<Parameters...>());
          }};
}

struct Row {
  const char* Owner;       // the class, or "" for a function of the module
  const char* Name;        // several rows of one name are one function, called in several ways
  const char* Parameters;  // Parameters.h reads it
  Entry Function;
  bool Unlocked;   // whether Python's lock is released meanwhile
  bool TakesRows;  // whether an array may stand for the parameters
  const char* Help;
};
const std::vector<Row>& Rows();

struct Area {
  const char* Class;
  const char* Attribute;  // of a card
  const char* Help;
};
const std::vector<Area>& Areas();

// ---- Records ----

enum class Kind { Bool, Int32, UInt32, UInt16, Double, Text, Array, List, Record };

struct Field;

struct Type {
  Kind What;
  std::size_t Size;               // in bytes
  std::size_t Count = 1;          // of an array, at most of a list
  const Type* Element = nullptr;  // of an array or a list
  std::size_t Items = 0;          // where the elements of a list begin
  const char* Name = nullptr;     // of a record
  const Field* Fields = nullptr;
  std::size_t FieldCount = 0;
};

struct Field {
  const char* Name;
  std::size_t Offset;
  const Type* What;
  const char* Enum;  // or null
};

struct Record {
  const Type* What;
  void (*Init)(void* record);  // null for one that has no defaults of its own
};
const std::vector<Record>& Records();

}  // namespace KelvoPython
