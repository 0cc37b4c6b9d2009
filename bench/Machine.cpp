#include "Machine.h"

#include <sched.h>
#include <sys/utsname.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace VELTRO::KELVO::Bench {

namespace {

std::string CpuModel() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    const auto colon = line.find(": ");
    if (line.starts_with("model name") && colon != std::string::npos) return line.substr(colon + 2);
  }
  return "unknown";
}

}  // namespace

void PrintMachine() {
  utsname system{};
  uname(&system);
  double load[1] = {};
  if (getloadavg(load, 1) != 1) load[0] = -1;
  std::printf("cpu      %s, %zu core(s) usable\n", CpuModel().c_str(), AllowedCpus().size());
  std::printf("kernel   %s %s %s\n", system.sysname, system.release, system.machine);
  std::printf("load     %.2f over the last minute, before the first row\n", load[0]);
#ifndef __OPTIMIZE__
  std::printf("WARNING  built without optimization; the figures say nothing about a release build\n");
#endif
}

std::vector<int> AllowedCpus() {
  // Asked once, because pinning narrows the answer.
  static const std::vector<int> allowed = [] {
    cpu_set_t set;
    CPU_ZERO(&set);
    if (sched_getaffinity(0, sizeof(set), &set) != 0) {
      throw std::system_error(errno, std::generic_category(), "sched_getaffinity");
    }
    std::vector<int> cpus;
    for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
      if (CPU_ISSET(static_cast<unsigned>(cpu), &set)) cpus.push_back(cpu);
    }
    return cpus;
  }();
  return allowed;
}

void PinAllThreads(const std::vector<int>& cpus) {
  cpu_set_t set;
  CPU_ZERO(&set);
  for (const int cpu : cpus) CPU_SET(static_cast<unsigned>(cpu), &set);
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    const pid_t thread = std::stoi(entry.path().filename().string());
    // A thread may end between the listing and the call.
    if (sched_setaffinity(thread, sizeof(set), &set) != 0 && errno != ESRCH) {
      throw std::system_error(errno, std::generic_category(), "sched_setaffinity");
    }
  }
}

}  // namespace VELTRO::KELVO::Bench
