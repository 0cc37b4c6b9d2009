// A directory for a test, and devices that a test may ruin.
#pragma once

#include <sys/sysmacros.h>

#include "support/Usual.h"

namespace VELTRO::KELVO::Test {

// It goes with the object, and all that is in it.
struct TemporaryDirectory {
  TemporaryDirectory() { EXPECT_NE(mkdtemp(Path.data()), nullptr); }
  ~TemporaryDirectory() { std::filesystem::remove_all(Path); }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  std::string Path = "/tmp/kelvo-test-XXXXXX";
};

inline std::string ContentOf(const std::filesystem::path& path) {
  return {std::istreambuf_iterator<char>(std::ifstream(path, std::ios::binary).rdbuf()), {}};
}

// Where to write to a device of memory: "null", or "full", which takes nothing. A fault under test could replace the
// system's own when root runs it; so root has them elsewhere.
inline std::string Device(const std::string& name) {
  static const TemporaryDirectory directory;
  const std::string own = directory.Path + "/" + name;
  if (geteuid() != 0) return "/dev/" + name;
  if (access(own.c_str(), F_OK) != 0) {
    EXPECT_EQ(mknod(own.c_str(), S_IFCHR | 0666, makedev(1, name == "null" ? 3 : 7)), 0);
  }
  return own;
}

}  // namespace VELTRO::KELVO::Test
