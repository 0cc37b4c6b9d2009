// One open file on the card.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rpc/RpcCaller.h"
#include "rpc/RpcRemoteException.h"

namespace VELTRO::KELVO::ClientLib {

// Bytes of a file where they lie: ours on the way to the card, in the card's answer on their way here.
class FilePiece {
 public:
  static constexpr std::string_view WireName = "binary";

  FilePiece() = default;
  explicit FilePiece(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::span<const std::uint8_t> Get() const { return bytes_; }
  // As the log shows bytes.
  std::string ToString() const { return LogText(std::vector<std::uint8_t>(bytes_.begin(), bytes_.end())); }
  // Throws as Body::Bytes.
  void TakeFrom(InputPacket&& answer) {
    answer_ = std::move(answer);
    const auto bytes = Body::Bytes(answer_.Rest());
    bytes_ = {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
  }
  template <class Packer>
  void msgpack_pack(Packer& packer) const {
    const auto count = static_cast<std::uint32_t>(bytes_.size());
    packer.pack_bin(count).pack_bin_body(reinterpret_cast<const char*>(bytes_.data()), count);
  }

 private:
  InputPacket answer_;
  std::span<const std::uint8_t> bytes_;
};

// The end of the object closes the file on the card. It does not wait for a card that has left an earlier call on
// this handle unanswered, or whose connection is down.
class FileHandle {
 public:
  using Bytes = std::vector<std::uint8_t>;

  // Takes over a file that is open on the card.
  FileHandle(RpcCaller& caller, std::int32_t number) : caller_(caller), number_(number) {}
  ~FileHandle();
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;

  // Deliberate oddity: `count` bytes beyond ClientAPI::MaxPacketSize go out in pieces of which only the first carries
  // bytes. The second has none behind its full count, or, like every later one, throws std::length_error.
  void Write(const std::uint8_t* bytes, std::int32_t count);
  void Write(std::span<const std::uint8_t> bytes) {
    Call("FileWrite", FilePiece(bytes), static_cast<std::int32_t>(bytes.size()));
  }
  void write(const char* bytes, std::size_t count) {
    Write(reinterpret_cast<const std::uint8_t*>(bytes), static_cast<std::int32_t>(count));
  }
  // As many bytes as the card gives, `count` at most if it keeps to the rule.
  Bytes Read(std::int32_t count) { return Call<Bytes>("FileRead", count); }
  FilePiece ReadPiece(std::int32_t count) { return Call<FilePiece>("FileRead", count); }
  std::string ReadText(std::int32_t count) { return Call<std::string>("FileReadText", count); }
  std::string ReadTextLine() { return Call<std::string>("FileReadTextLine"); }
  // Throws std::runtime_error "File is to large." (spelled so) beyond 0x7FFFFFFF bytes.
  void WriteText(std::string_view text);
  void WriteTextLine(std::string_view text) { Call("FileWriteTextLine", text); }
  std::uint64_t GetSize() { return Call<std::uint64_t>("FileGetSize"); }

 private:
  void Send(const Bytes& bytes, std::int32_t count) { Call("FileWrite", bytes, count); }
  template <class Result = void, class... Args>
  Result Call(Checked<Result, std::int32_t, Args...> method, const Args&... args) {
    try {
      return caller_.Call<Result>(method, number_, args...);
    } catch (const RpcRemoteException&) {
      throw;
    } catch (const msgpack::type_error&) {
      throw;
    } catch (...) {
      isAnswering_ = false;
      throw;
    }
  }

  RpcCaller& caller_;
  const std::int32_t number_;
  bool isAnswering_ = true;
};

}  // namespace VELTRO::KELVO::ClientLib
