#pragma once

#include "Harness.h"

namespace VELTRO::KELVO::Bench {

inline constexpr const char* kCallLatency = "call latency";
inline constexpr const char* kFutexCallLatency = "call latency, futex";
inline constexpr const char* kPingPong = "ping-pong without receive thread";
inline constexpr const char* kParallelCalls = "calls from 8 threads";
inline constexpr const char* kNotificationRate = "notification rate";
inline constexpr const char* kNotificationLatency = "notification latency";

double RunRawCallLatency(RowContext& context);
double RunRawFutexCallLatency(RowContext& context);
double RunRawPingPong(RowContext& context);
double RunRawParallelCalls(RowContext& context);
double RunRawNotificationRate(RowContext& context);
double RunRawNotificationLatency(RowContext& context);

void RegisterReferenceRows(Harness& harness);

}  // namespace VELTRO::KELVO::Bench
