// MessagePack as JSON and back, so that an answer can be an argument again: what JSON lacks is an object with one key.
//   {"base64": "AQI="}              binary
//   {"number": "nan"}               a double that is no number: nan, inf, -inf
//   {"map": [["a", 1], [2, 3]]}     a map whose keys are not all texts, or which would look like one of these
//   {"text": "/w=="}                a text that is no UTF-8
//   {"extension": [5, "AQI="]}      an extension, by its type
// A number with a fraction or an exponent is a double, any other an integer.
#pragma once

#include <string>
#include <string_view>

#include "rpc/MsgPack.h"

// Neither way is there a tree of the JSON library's values: it looks for each key of an object among all that it has,
// and its end takes memory, where there is none that of the process.
namespace VELTRO::KELVO::ClientLib::JsonForm {

// A JSON array as MessagePack. Throws std::runtime_error "The arguments are no JSON array.", "The arguments are nested
// too deeply." (more than 256 levels), "An object has the key 'KEY' twice.", or for an object with one of the keys above
// that is none of its kind.
std::string Pack(std::string_view json);
std::string TextOf(const msgpack::object& object);
// The same behind a text that is there; and of a text and of binary alone.
void AppendText(std::string& text, const msgpack::object& object);
void AppendString(std::string& text, std::string_view string);
void AppendBinary(std::string& text, std::string_view bytes);

}  // namespace VELTRO::KELVO::ClientLib::JsonForm
