// The one place that includes the MessagePack library.
#pragma once

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include <msgpack.hpp>
#pragma GCC diagnostic pop
