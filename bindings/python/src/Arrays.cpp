#include "Arrays.h"

#include <bit>
#include <cstdint>
#include <cstring>
#include <map>
#include <utility>

#include "Records.h"

namespace KelvoPython {
namespace {

// Without the mark of the order of bytes; empty for another order than the machine's.
std::string NativeFormat(const Py_buffer& view) {
  std::string format = view.format == nullptr ? "B" : view.format;
  constexpr bool little = std::endian::native == std::endian::little;
  if (format[0] == '@' || format[0] == '=' || format[0] == (little ? '<' : '>')) return format.substr(1);
  return format[0] == '<' || format[0] == '>' || format[0] == '!' ? "" : format;
}

bool Holds(const Py_buffer& view, char letter) {
  std::string format = NativeFormat(view);
  if (format == "l") format = "i";  // of four bytes, where there is such a one
  if (format == "L") format = "I";
  return format.size() == 1 && format[0] == letter &&
         static_cast<std::size_t>(view.itemsize) == ArrayKind{letter}.ElementSize();
}

std::string ElementName(const Py_buffer& view) {
  const std::string bits = std::to_string(view.itemsize * 8);
  const std::string format = NativeFormat(view);
  if (format.size() == 1 && std::strchr("efdg", format[0]) != nullptr) return "float" + bits;
  if (format.size() == 1 && std::strchr("bhilqn", format[0]) != nullptr) return "int" + bits;
  if (format.size() == 1 && std::strchr("BHILQN", format[0]) != nullptr) return "uint" + bits;
  return format == "?" ? "bool" : std::string("format '") + view.format + "'";
}

}  // namespace

std::size_t ArrayKind::ElementSize() const {
  return Letter == 'd' ? 8 : Letter == 'H' ? 2 : Letter == 'B' ? 1 : 4;
}

ArrayKind ArrayKindNamed(const std::string& name) {
  static const std::map<std::string, ArrayKind> kinds = {
      {"f64", {'d', 0}},   {"i32", {'i', 0}},   {"u32", {'I', 0}},   {"u16", {'H', 0}},  {"u8", {'B', 0}},
      {"f64x2", {'d', 2}}, {"f64x3", {'d', 3}}, {"i32x2", {'i', 2}}, {"i32x3", {'i', 3}}};
  return kinds.at(name);
}

ArrayView::ArrayView(py::handle array, char letter, std::string expected) : expected_(std::move(expected)) {
  if (PyObject_CheckBuffer(array.ptr()) == 0) {
    Refuse(PyExc_TypeError, expected_ + ", not " + TypeName(array));
  }
  if (PyObject_GetBuffer(array.ptr(), &view_, PyBUF_RECORDS_RO) != 0) throw py::error_already_set();
  if (Holds(view_, letter) && view_.ndim > 0) return;
  const std::string found = view_.ndim > 0 ? ", not of " + ElementName(view_) : ", not a single value";
  PyBuffer_Release(&view_);
  Refuse(PyExc_TypeError, expected_ + found);
}

ArrayView::~ArrayView() {
  PyBuffer_Release(&view_);
}

ArrayView::ArrayView(ArrayView&& other) noexcept
    : view_(std::exchange(other.view_, {})), expected_(std::move(other.expected_)) {}

std::ptrdiff_t ArrayView::Columns() const {
  return view_.ndim == 1 ? 0 : view_.ndim == 2 ? view_.shape[1] : -1;
}

void ArrayView::RefuseShape() const {
  std::string shape = "(";
  for (int i = 0; i < view_.ndim; ++i) {
    shape += std::to_string(view_.shape[i]) + (i + 1 < view_.ndim ? ", " : view_.ndim == 1 ? ",)" : ")");
  }
  Refuse(PyExc_ValueError, expected_ + ", not of shape " + shape);
}

const void* ArrayView::Elements(std::vector<std::byte>& copy) const {
  const auto size = static_cast<std::size_t>(view_.itemsize);
  if (PyBuffer_IsContiguous(&view_, 'C') != 0 && reinterpret_cast<std::uintptr_t>(view_.buf) % size == 0)
    return view_.buf;
  copy.resize(static_cast<std::size_t>(view_.len));
  if (PyBuffer_ToContiguous(copy.data(), &view_, view_.len, 'C') != 0) throw py::error_already_set();
  return copy.data();
}

}  // namespace KelvoPython
