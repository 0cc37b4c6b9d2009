// The files of virtual-card/page/, which are compiled into the program (PageFiles.cmake).
#pragma once

#include <span>
#include <string_view>

namespace VELTRO::KELVO::VirtualCard {

struct PageFile {
  std::string_view Path;  // that it is asked for by
  std::string_view ContentType;
  std::string_view Content;
};

std::span<const PageFile> PageFiles();

}  // namespace VELTRO::KELVO::VirtualCard
