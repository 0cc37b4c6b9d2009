#include "kelvo/KelvoFileAPI.h"

#include <algorithm>
#include <limits>

#include "capi/Frame.h"
#include "capi/Progress.h"

using namespace VELTRO::KELVO::ClientLib;

namespace {

// On the files of a directory: `work` gets them and the directory.
template <class Work>
int32_t OnFiles(int32_t handle, int32_t directory, Work&& work) {
  return On<FileAPIVL>(handle,
                       [&](FileAPIVL& files) { work(files, DirectorySelector::_from_integral(directory)); });
}

// The names with a zero behind each.
std::string Joined(const std::vector<std::string>& names) {
  std::string joined;
  for (const std::string& name : names) {
    if (name.find('\0') != std::string::npos) {
      throw std::runtime_error("The card sent a file name that is none.");
    }
    joined.append(name).push_back('\0');
  }
  if (joined.size() > std::numeric_limits<uint32_t>::max()) throw std::runtime_error("Buffer is too small.");
  return joined;
}

}  // namespace

int32_t vlFileGetFiles(int32_t handle, int32_t directory, char* buffer, uint32_t size, uint32_t* length,
                       uint32_t* count) {
  return OnFiles(handle, directory, [&](FileAPIVL& files, DirectorySelector selector) {
    NotNull(length, "length"), NotNull(count, "count");
    if (size > 0) NotNull(buffer, "buffer");
    const std::vector<std::string> names = files.GetFiles(selector);
    const std::string text = Joined(names);
    if (size > 0) {
      if (text.size() > size) throw std::runtime_error("Buffer is too small.");
      std::ranges::copy(text, buffer);
    }
    *length = static_cast<uint32_t>(text.size());
    *count = static_cast<uint32_t>(names.size());
  });
}

int32_t vlFileExists(int32_t handle, int32_t directory, const char* name, bool* exists) {
  return OnFiles(handle, directory, [&](FileAPIVL& files, DirectorySelector selector) {
    NotNull(exists, "exists");
    *exists = files.Exists(selector, NotNull(name, "name"));
  });
}

int32_t vlFileDelete(int32_t handle, int32_t directory, const char* name) {
  return OnFiles(handle, directory, [&](FileAPIVL& files, DirectorySelector selector) {
    files.Delete(selector, NotNull(name, "name"));
  });
}

int32_t vlFilePut(int32_t handle, int32_t directory, const char* name, const char* path,
                  vlFileProgressCallback progress, void* user) {
  return OnFiles(handle, directory, [&](FileAPIVL& files, DirectorySelector selector) {
    files.Put(selector, NotNull(name, "name"), NotNull(path, "path"), ProgressOf(progress, user));
  });
}

int32_t vlFileGet(int32_t handle, int32_t directory, const char* name, const char* path,
                  vlFileProgressCallback progress, void* user) {
  return OnFiles(handle, directory, [&](FileAPIVL& files, DirectorySelector selector) {
    files.Get(selector, NotNull(name, "name"), NotNull(path, "path"), ProgressOf(progress, user));
  });
}
