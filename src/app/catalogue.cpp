#include "app/catalogue.h"

#include <array>
#include <utility>

namespace keldo {
namespace {

using Row = std::pair<int, std::string_view>;

// One row per number; texts exactly as shown, without the appended full stop.
constexpr std::array kRows = {
    Row{1, "Insufficient number of graphs"},
    Row{2, "Graph data incompatible"},
    Row{3, "Improper graph specification"},
    Row{4, "Left endpoint for X-interval must be less than right endpoint"},
    Row{5, "Left endpoint for Y-interval must be less than right endpoint"},
    Row{6, "Improper specification for one of the intervals"},
    Row{7, "Damping power must be between 0 and 1"},
    Row{8, "Damping constant must be non-negative"},
    Row{9, "Damping constant must be positive"},
    Row{10, "Error in specifying threshold value"},
    Row{11, "Threshold value cannot be negative"},
    Row{12, "Command string needed for a sum or product variable"},
    Row{13, "Type of wavelet not specified"},
    Row{14, "The order must be an even integer between 4 and 20"},
    Row{15, "The order must be a multiple of 6 between 6 and 30"},
    Row{16, "Method of forming series not specified"},
    Row{17, "Number of coefficients must be between 0 and total number of points"},
    Row{18, "Energy fraction must lie between 0 and 1"},
    Row{19, "Threshold must lie between 0 and 1"},
    Row{20, "Error loading file"},
    Row{21, "Improper number of levels"},
    Row{22, "Error loading help file"},
    Row{23, "Improper formula"},
    Row{24, "Sorry. This printing position/size is not supported at this time."},
    Row{25, "Improper number for real data"},
    Row{26, "Improper number for real filter"},
    Row{27, "Improper number(s) for complex data"},
    Row{28, "Improper number(s) for complex filter"},
    Row{29, "Improper number of harmonics"},
    Row{30, "Number of terms must be between 0 and total number of points"},
    Row{31, "You cannot zoom anymore on this graph"},
    Row{32, "Error saving file"},
    Row{33, "Error printing form"},
    Row{34, "Error printing graph"},
    Row{35, "Threshold of 0 not allowed when quantizing"},
    Row{36, "Error saving form"},
    Row{37, "Error initializing sound, file or device not ready"},
    Row{38, "Invalid sampling rate. Use an integer from 441 to 44100"},
    Row{39, "Error playing sound"},
    Row{40, "Color printing not supported at this time"},
    Row{41, "Error loading file"},
    Row{42, "Window too small for audio play"},
    Row{43, "KELDO cannot load stereo sound files"},
    Row{44, "Number of noise terms cannot be more than 30000"},
    Row{45, "Number of noise terms must be at least 1"},
    Row{46, "Error loading sound file"},
    Row{47, "Sound file too big"},
    Row{48, "Sound file error"},
    Row{49, "Sound file capacity exceeded"},
    Row{50, "Volume factor must be positive"},
    Row{51, "Error changing volume"},
    Row{52, "Error in calculator formula"},
    Row{53, "No graph values in display window"},
    Row{54, "Error tracing graph(s)"},
    Row{55, "Error computing statistics"},
    Row{56, "Incorrect window length"},
    Row{57, "Incorrect step size"},
    Row{58, "Number of octaves must be at least 1"},
    Row{59, "Number of octaves must be no more than 256"},
    Row{60, "Number of voices must be at least 1"},
    Row{61, "Too many voices"},
    Row{62, "Width must be positive"},
    Row{63, "Freq. must be positive"},
    Row{64, "Threshold must be non-negative"},
    Row{65, "Error saving scalogram"},
    Row{66, "Error saving spectrogram"},
    Row{67, "Missing parameter value. Use command string to specify its value"},
    Row{68, "Error in threshold formula"},
    Row{69, "Error computing scalogram"},
    Row{70, "Error computing spectrogram"},
    Row{71, "File access error"},
    Row{72, "Error loading form, not enough memory"},
    Row{73, "Error loading form"},
    Row{74, "Zoom center X-coordinate too small"},
    Row{75, "Zoom center X-coordinate too large"},
    Row{76, "Zoom center Y-coordinate too small"},
    Row{77, "Zoom center Y-coordinate too large"},
    Row{78, "Number of levels must be at least 1"},
    Row{79, "Error saving TeX file"},
    Row{80, "The order must be an even integer between 8 and 20"},
    Row{81, "PSNR value must be positive"},
    Row{82, "Bpp value must be positive"},
    Row{83, "PSNR value must be non-negative"},
    Row{84, "Bpp value must be non-negative"},
    Row{85, "Error decompressing file"},
    Row{86, "Fraction of bits to ROI must be greater than 0"},
    Row{87, "Fraction of bits to ROI must be no more than 1"},
    Row{88, "Error decompressing.  This is a demo program only.  Use JPEG2000 (e.g. in "
            "Image Analyzer) for best (thoroughly debugged) image compression"},
    Row{89, "Left endpoint of Clipboard Data must be less than right endpoint"},
    Row{90, "Left endpoint of Clipboard Data must be 0 or the negative of right endpoint"},
    Row{91, "Error in pasted function data"},
    Row{-1, "Filter not available yet"},
};

constexpr std::string_view kUnknown = "Error";

const Row* FindRow(int number) {
  for (const Row& row : kRows) {
    if (row.first == number) return &row;
  }
  return nullptr;
}

}  // namespace

std::string_view CatalogueText(int number) {
  const Row* row = FindRow(number);
  return row ? row->second : kUnknown;
}

std::string CatalogueMessage(int number) {
  std::string text(CatalogueText(number));
  text += '.';
  return text;
}

bool CatalogueHasRow(int number) { return FindRow(number) != nullptr; }

}  // namespace keldo
