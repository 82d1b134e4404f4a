// Stills by their signature: PNG or OpenEXR.

#include <cerrno>
#include <cstring>
#include <fstream>

#include "DecodedMedia.h"

namespace lattica::standalone {

DecodedImage decodeImageFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw MediaError(path, std::strerror(errno));
  unsigned char head[8] = {};
  in.read(reinterpret_cast<char*>(head), sizeof(head));
  const std::streamsize got = in.gcount();
  in.close();
  static const unsigned char kPng[8] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
  static const unsigned char kExr[4] = {0x76, 0x2f, 0x31, 0x01};
  if (got == 8 && std::memcmp(head, kPng, 8) == 0) return decodePng(path);
  if (got >= 4 && std::memcmp(head, kExr, 4) == 0) return decodeExr(path);
  if (std::filesystem::is_directory(path)) throw MediaError(path, "is a folder");
  throw MediaError(path, "neither a PNG nor an OpenEXR file");
}

}  // namespace lattica::standalone
