// Arrays of Python, by the buffer protocol: taken as they are, or refused.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "Interpreter.h"

namespace KelvoPython {

// What an array must be: "f64x3" are rows of three doubles, "u16" is a plain array.
struct ArrayKind {
  char Letter = 'd';  // as in the module struct: d i I H B
  std::size_t Columns = 0;

  std::size_t ElementSize() const;
};
ArrayKind ArrayKindNamed(const std::string& name);

class ArrayView {
 public:
  // Throws a TypeError for what is no array or has other elements; `expected` says in it what was to be given.
  ArrayView(py::handle array, char letter, std::string expected);
  ~ArrayView();
  ArrayView(ArrayView&& other) noexcept;
  ArrayView(const ArrayView&) = delete;
  ArrayView& operator=(const ArrayView&) = delete;

  // 0 for a plain array, -1 for one with more than two dimensions.
  std::ptrdiff_t Columns() const;
  std::size_t Rows() const { return static_cast<std::size_t>(view_.shape[0]); }
  const char* Row(std::size_t row) const {
    return static_cast<const char*>(view_.buf) + static_cast<std::ptrdiff_t>(row) * view_.strides[0];
  }
  // In bytes, between the elements of a row.
  std::ptrdiff_t Step() const { return view_.strides[1]; }

  // The elements one behind the other: where they lie, if they lie so, else in `copy`.
  const void* Elements(std::vector<std::byte>& copy) const;

  [[noreturn]] void RefuseShape() const;

 private:
  Py_buffer view_{};
  std::string expected_;
};

}  // namespace KelvoPython
