// Any bytes as a PNG, JPEG, TIFF, GIF or bitmap (the first byte chooses)
// through the imaging service the desktop program uses, then through the
// rule that turns a square picture into a graph: a picture within the size
// cap or nothing, and for a square one samples of the side it says.

#include <cstdlib>

#include "form2d/image_files.h"
#include "fuzz/fuzz_frame.h"
#include "platform/headless/simple_images.h"
#include "qt/qt_imaging.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace keldo;
  if (size == 0) return 0;
  static const char* kExtensions[] = {".png", ".jpg", ".tif", ".gif", ".bmp"};
  const std::string path = fuzz::WriteInput(data + 1, size - 1, kExtensions[data[0] % 5]);
  qt::QtImaging imaging;
  const std::optional<platform::RgbImage> picture = imaging.Load(path);
  if (!picture) return 0;
  if (picture->width > platform::kMaxImageSide || picture->height > platform::kMaxImageSide) std::abort();
  if (picture->pixels.size() != static_cast<std::size_t>(picture->width) * static_cast<std::size_t>(picture->height))
    std::abort();
  const std::optional<form2d::LoadedImage> loaded = form2d::SamplesOfPicture(*picture);
  if (!loaded) return 0;
  if (picture->width != picture->height) std::abort();
  const auto side = static_cast<std::size_t>(loaded->points) + 1;
  if (loaded->points < form2d::kMinFilePoints || loaded->points > form2d::kMaxFilePoints) std::abort();
  if (loaded->samples.size() < side * side) std::abort();
  for (const float v : loaded->samples)
    if (!(v >= 0.0f && v <= 255.0f)) std::abort();
  return 0;
}
