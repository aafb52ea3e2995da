#include "platform/headless/pdf_document.h"

#include <cstdio>

namespace keldo::platform {
namespace {

// Numbers in content streams: fixed point, four decimals, no exponent.
std::string Num(double v) {
  char text[48];
  std::snprintf(text, sizeof text, "%.4f", v);
  return text;
}

std::string Unit(int channel) { return Num(channel / 255.0); }

// A literal string of the PDF: parentheses and backslashes escaped, other
// bytes as they are (the text is one byte per character).
std::string Literal(const std::string& text) {
  std::string out = "(";
  for (char c : text) {
    if (c == '(' || c == ')' || c == '\\') out.push_back('\\');
    out.push_back(c);
  }
  out.push_back(')');
  return out;
}

// Width of a line and side of a dot, in points.
constexpr double kLineWidth = 0.6;
constexpr double kDotSide = 0.9;

}  // namespace

PdfDocument::PdfDocument(PageSize page) : page_(page) { pages_.emplace_back(); }

void PdfDocument::NewPage() { pages_.emplace_back(); }

std::string& PdfDocument::Content() { return pages_.back(); }

void PdfDocument::SetFont(double points) { fontPoints_ = points > 0.0 ? points : 10.0; }

void PdfDocument::StrokeColour(Rgb c) {
  Content() += Unit(RedOf(c)) + " " + Unit(GreenOf(c)) + " " + Unit(BlueOf(c)) + " RG\n";
}

void PdfDocument::FillColour(Rgb c) {
  Content() += Unit(RedOf(c)) + " " + Unit(GreenOf(c)) + " " + Unit(BlueOf(c)) + " rg\n";
}

void PdfDocument::Line(double x1, double y1, double x2, double y2, Rgb color) {
  StrokeColour(color);
  Content() += Num(kLineWidth) + " w " + Num(X(x1)) + " " + Num(Y(y1)) + " m " + Num(X(x2)) + " " + Num(Y(y2)) +
               " l S\n";
}

void PdfDocument::Dot(double x, double y, Rgb color) {
  FillColour(color);
  Content() += Num(X(x) - kDotSide / 2) + " " + Num(Y(y) - kDotSide / 2) + " " + Num(kDotSide) + " " +
               Num(kDotSide) + " re f\n";
}

void PdfDocument::Text(double x, double y, const std::string& text) {
  FillColour(kBlack);
  Content() += "BT /F1 " + Num(fontPoints_) + " Tf " + Num(X(x)) + " " + Num(Y(y)) + " Td " + Literal(text) +
               " Tj ET\n";
}

void PdfDocument::Picture(double x, double y, double width, double height, const RgbImage& image) {
  if (image.Empty()) return;
  images_.push_back(image);
  Content() += "q " + Num(width * 72.0) + " 0 0 " + Num(height * 72.0) + " " + Num(X(x)) + " " +
               Num(Y(y + height)) + " cm /Im" + std::to_string(images_.size()) + " Do Q\n";
}

std::string PdfDocument::Bytes() const {
  // Objects: 1 catalogue, 2 page tree, 3 font, then each picture, then a
  // page and its content stream for each page.
  const int firstImage = 4;
  const int firstPage = firstImage + static_cast<int>(images_.size());
  std::vector<std::string> objects;
  std::string kids;
  for (std::size_t p = 0; p < pages_.size(); ++p) kids += std::to_string(firstPage + 2 * static_cast<int>(p)) + " 0 R ";
  objects.push_back("<< /Type /Catalog /Pages 2 0 R >>");
  objects.push_back("<< /Type /Pages /Kids [" + kids + "] /Count " + std::to_string(pages_.size()) + " >>");
  objects.push_back("<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica /Encoding /WinAnsiEncoding >>");
  std::string xobjects;
  for (std::size_t i = 0; i < images_.size(); ++i) {
    const RgbImage& im = images_[i];
    std::string data;
    data.reserve(im.pixels.size() * 3);
    for (Rgb c : im.pixels) {
      data.push_back(static_cast<char>(RedOf(c)));
      data.push_back(static_cast<char>(GreenOf(c)));
      data.push_back(static_cast<char>(BlueOf(c)));
    }
    objects.push_back("<< /Type /XObject /Subtype /Image /Width " + std::to_string(im.width) + " /Height " +
                      std::to_string(im.height) + " /ColorSpace /DeviceRGB /BitsPerComponent 8 /Length " +
                      std::to_string(data.size()) + " >>\nstream\n" + data + "\nendstream");
    xobjects += "/Im" + std::to_string(i + 1) + " " + std::to_string(firstImage + static_cast<int>(i)) + " 0 R ";
  }
  const std::string box = "[0 0 " + Num(page_.width * 72.0) + " " + Num(page_.height * 72.0) + "]";
  for (std::size_t p = 0; p < pages_.size(); ++p) {
    const int contents = firstPage + 2 * static_cast<int>(p) + 1;
    objects.push_back("<< /Type /Page /Parent 2 0 R /MediaBox " + box + " /Resources << /Font << /F1 3 0 R >> " +
                      "/XObject << " + xobjects + ">> >> /Contents " + std::to_string(contents) + " 0 R >>");
    objects.push_back("<< /Length " + std::to_string(pages_[p].size()) + " >>\nstream\n" + pages_[p] +
                      "endstream");
  }
  std::string out = "%PDF-1.4\n%\xE2\xE3\xCF\xD3\n";
  std::vector<std::size_t> offsets;
  for (std::size_t i = 0; i < objects.size(); ++i) {
    offsets.push_back(out.size());
    out += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
  }
  const std::size_t xref = out.size();
  out += "xref\n0 " + std::to_string(objects.size() + 1) + "\n0000000000 65535 f \n";
  for (std::size_t offset : offsets) {
    char line[24];
    std::snprintf(line, sizeof line, "%010zu 00000 n \n", offset);
    out += line;
  }
  out += "trailer\n<< /Size " + std::to_string(objects.size() + 1) + " /Root 1 0 R >>\nstartxref\n" +
         std::to_string(xref) + "\n%%EOF\n";
  return out;
}

}  // namespace keldo::platform
