// MessagePack as JSON and back, so that an answer can be an argument again: what JSON lacks is an object with one key.
//   {"base64": "AQI="}              binary
//   {"number": "nan"}               a double that is no number: nan, inf, -inf
//   {"map": [["a", 1], [2, 3]]}     a map whose keys are not all texts, or which would look like one of these
//   {"text": "/w=="}                a text that is no UTF-8
//   {"extension": [5, "AQI="]}      an extension, by its type
// A number with a fraction or an exponent is a double, any other an integer.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include "rpc/MsgPack.h"

namespace VELTRO::KELVO::ClientLib {

class OutputPacket;

namespace JsonForm {

nlohmann::ordered_json From(const msgpack::object& object);
// Throws std::runtime_error for an object with one of these keys that is none of its kind, and for values nested deeper
// than 256.
void Pack(const nlohmann::ordered_json& json, OutputPacket& packet);

}  // namespace JsonForm

}  // namespace VELTRO::KELVO::ClientLib
