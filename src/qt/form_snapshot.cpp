#include "qt/form_snapshot.h"

#include <QImage>
#include <QPainter>

#include "app/frame.h"
#include "qt/form_view.h"
#include "qt/qt_surface.h"

namespace keldo::qt {
namespace {

QImage RenderView(Form& form) {
  FormView view(form);
  view.resize(view.sizeHint());
  view.ensurePolished();
  QImage image(view.size(), QImage::Format_RGB32);
  image.fill(Qt::white);
  view.render(&image);
  return image;
}

}  // namespace

bool SaveFormSnapshot(Frame& frame, Form* form, const std::string& path) {
  if (!form) {
    // No form: the empty frame, as a desk-coloured picture with its caption.
    QImage image(800, 600, QImage::Format_RGB32);
    image.fill(QColor(0x70, 0x80, 0x90));
    QPainter p(&image);
    p.setPen(Qt::white);
    p.drawText(image.rect(), Qt::AlignCenter, QStringLiteral("KELDO"));
    p.end();
    (void)frame;
    return image.save(QString::fromStdString(path), "PNG");
  }
  return RenderView(*form).save(QString::fromStdString(path), "PNG");
}

platform::RgbImage RenderFormView(Form& form) { return FromQImage(RenderView(form)); }

}  // namespace keldo::qt
