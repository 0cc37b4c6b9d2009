// What a user would take instead of the library. Each pair of functions is built where its package is installed.
#pragma once

#include <string_view>

#include "Harness.h"

namespace VELTRO::KELVO::Bench {

// This program as a peer's server: "--peer-server NAME". Standard output carries the port, and the end of standard input
// ends it.
inline constexpr const char* kPeerServerArgument = "--peer-server";
int RunPeerServer(std::string_view name);

// All that are built.
void RegisterPeerRows(Harness& harness);

// Tells the port to who started this server, and ends the process with standard input, on a thread of its own.
void ReportPort(std::uint16_t port);

int RunZeroMqServer();
void RegisterZeroMqRows(Harness& harness);
int RunCapnProtoServer();
void RegisterCapnProtoRows(Harness& harness);
void RegisterSimdJsonRows(Harness& harness);
void RegisterRapidJsonRows(Harness& harness);
void RegisterMessagePackRows(Harness& harness);

}  // namespace VELTRO::KELVO::Bench
