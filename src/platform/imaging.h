#pragma once
// Loading and saving pictures by file extension (BMP, JPEG, PNG, PGM, TIFF ...).

#include <optional>
#include <string>

#include "platform/image.h"

namespace keldo::platform {

struct ImageSaveOptions {
  int jpegQuality = 75;      // 1..100
  int tiffCompression = 0;   // 0 none, 1 packbits/lzw where the writer has it
  bool greyScale = false;    // JPEG: one grey channel
  bool progressive = false;  // JPEG: progressive scan
  bool interlaced = false;   // PNG: interlaced, where the writer has it
};

class Imaging {
 public:
  virtual ~Imaging() = default;
  virtual std::optional<RgbImage> Load(const std::string& path) = 0;
  virtual bool Save(const std::string& path, const RgbImage& image,
                    const ImageSaveOptions& options) = 0;
};

}  // namespace keldo::platform
