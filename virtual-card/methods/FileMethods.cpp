#include "methods/MethodTable.h"

namespace VELTRO::KELVO::VirtualCard {

namespace {

using ClientLib::FileMode;
using Bytes = OpenFile::Bytes;

CardFiles::Directory DirectoryOf(std::int32_t number) {
  return CardFiles::Directory::_from_integral(number);
}

// The first `count` of the bytes.
std::string_view Counted(const Bytes& bytes, std::int32_t count) {
  if (count < 0 || count > std::ssize(bytes)) {
    throw std::runtime_error("The count is not that of the bytes.");
  }
  return {reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(count)};
}

}  // namespace

std::span<const Method> FileMethods() {
  static constexpr Method Rows[] = {
      {"GetFiles",
       [](Card& card, std::int32_t directory) { return card.Files.GetNames(DirectoryOf(directory)); }},
      {"FileExists", [](Card& card, std::int32_t directory,
                        const std::string& name) { return card.Files.Exists(DirectoryOf(directory), name); }},
      {"FileDelete", [](Card& card, std::int32_t directory,
                        const std::string& name) { card.Files.Delete(DirectoryOf(directory), name); }},
      {"GetFileHandle",
       [](CardClient& client, std::int32_t directory, const std::string& name) {
         return client.Files.Find(DirectoryOf(directory), name);
       }},
      {"FileOpen",
       [](CardClient& client, std::int32_t directory, const std::string& name, std::int32_t mode) {
         return client.Files.Open(DirectoryOf(directory), name, FileMode::_from_integral(mode));
       }},
      {"FileClose", [](CardClient& client, std::int32_t number) { client.Files.Close(number); }},
      {"FileGetSize",
       [](CardClient& client, std::int32_t number) { return client.Files.Get(number).GetSize(); }},
      {"FileWrite", [](CardClient& client, std::int32_t number, const Bytes& bytes,
                       std::int32_t count) { client.Files.Get(number).Write(Counted(bytes, count)); }},
      {"FileRead", [](CardClient& client, std::int32_t number,
                      std::int32_t count) { return client.Files.Get(number).Read(count); }},
      {"FileReadText",
       [](CardClient& client, std::int32_t number, std::int32_t count) {
         const Bytes bytes = client.Files.Get(number).Read(count);
         return std::string(bytes.begin(), bytes.end());
       }},
      {"FileReadTextLine",
       [](CardClient& client, std::int32_t number) { return client.Files.Get(number).ReadLine(); }},
      {"FileWriteText", [](CardClient& client, std::int32_t number,
                           const std::string& text) { client.Files.Get(number).Write(text); }},
      {"FileWriteTextLine", [](CardClient& client, std::int32_t number,
                               const std::string& text) { client.Files.Get(number).Write(text + "\n"); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::VirtualCard
