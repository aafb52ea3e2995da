#pragma once
// Pictures read and written through Qt's image plugins; bitmaps through the
// program's own codec. Kept apart from the other services so that it can
// be built and fuzzed without a window system.

#include "platform/imaging.h"

namespace keldo::qt {

class QtImaging final : public platform::Imaging {
 public:
  std::optional<platform::RgbImage> Load(const std::string& path) override;
  bool Save(const std::string& path, const platform::RgbImage& image,
            const platform::ImageSaveOptions& options) override;
};

}  // namespace keldo::qt
