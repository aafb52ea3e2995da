#pragma once
// A printed graph sent to files instead of paper, for a paper of one's own:
// the picture, drawn without labels at print resolution on white, as a
// .bmp file, and beside it a TeX file of \put commands that set the axis
// labels and the caption over the picture in a LaTeX picture environment.

#include <array>
#include <string>
#include <vector>

namespace keldo {
class Form;
}

namespace keldo::print {

// The saved picture: kImageWidthInches by kImageHeightInches at
// kImageDotsPerInch, so kImageWidth by kImageHeight pixels. In the TeX file
// one unit of the picture environment is one inch of it.
inline constexpr double kImageWidthInches = 2.25;
inline constexpr double kImageHeightInches = 1.5;
inline constexpr int kImageDotsPerInch = 300;
inline constexpr int kImageWidth = 675;
inline constexpr int kImageHeight = 450;
// Where the vertical labels stand, just right of the picture.
inline constexpr const char* kVerticalLabelColumn = "2.3";
// The picture is meant to stand this far above the picture environment's
// origin, so that the horizontal labels at height 0 fall under it; the
// vertical labels are at the ticks' heights above that.
inline constexpr double kTexPictureBottom = 0.2;

// The labels over a saved picture: five under it from left to right at
// quarters of its width, five beside it from top to bottom at quarters of
// its height (empty texts are left out), and the caption.
struct TexLabels {
  std::array<std::string, 5> horizontal;
  std::array<std::string, 5> vertical;
  std::string caption;
};

// The label file of an image path: the path without its extension (a dot
// in a folder name is not one) plus "_labels.tex".
std::string TexLabelPath(const std::string& imagePath);
// The lines of the label file, without their line ends.
std::vector<std::string> TexLabelLines(const TexLabels& labels);

// SaveToTexFile: writes the label file of `imagePath`, each line ended by
// CR LF, replacing an existing one; false, with any old file whole, when it
// cannot be written.
bool SaveToTexFile(const std::string& imagePath, const TexLabels& labels);

// SavePrintGraphToFile: the picture of the form to `path` as a BMP, then its
// label file. Reports 34 when the picture cannot be written (no label file
// is written then) and 79 when the label file cannot; false after a report.
bool SavePrintGraphToFile(Form& form, int picture, const std::string& path, const std::string& title);
// SaveThePrintedGraphToFile: asks for the path, in dialog folder 8 or the
// LaTeX folder, then saves; a cancelled dialog does nothing.
void SaveThePrintedGraphToFile(Form& form, int picture);

// SafeKill2: deletes a file if it exists, ignoring failure.
void SafeKill2(const std::string& path);

}  // namespace keldo::print
