// SPDX-License-Identifier: Apache-2.0
#include "ztportal/platform/http/Gzip.h"

#include <zlib.h>

#include <limits>
#include <memory>

namespace zt {

std::string gzip(std::string_view text) {
  if (text.size() > std::numeric_limits<uInt>::max() / 2) return {};
  z_stream stream{};
  constexpr int kGzipFormat = 16;  // added to the size of the window, as zlib.h says
  constexpr int kMemoryLevel = 8;
  if (::deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + kGzipFormat,
                     kMemoryLevel, Z_DEFAULT_STRATEGY) != Z_OK) {
    return {};
  }
  const std::unique_ptr<z_stream, decltype(&::deflateEnd)> owner(&stream, ::deflateEnd);
  std::string compressed(::deflateBound(&stream, static_cast<uLong>(text.size())), '\0');
  // zlib does not change its input, but takes it as not constant.
  stream.next_in = const_cast<Bytef*>(reinterpret_cast<const Bytef*>(text.data()));
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = reinterpret_cast<Bytef*>(compressed.data());
  stream.avail_out = static_cast<uInt>(compressed.size());
  if (::deflate(&stream, Z_FINISH) != Z_STREAM_END) return {};
  compressed.resize(stream.total_out);
  return compressed;
}

}  // namespace zt
