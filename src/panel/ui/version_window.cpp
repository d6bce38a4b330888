#include "panel/ui/version_window.h"

#include <QPixmap>

#include "panel/shell.h"
#include "platform/widgets.h"

namespace zenta {

VersionWindow::VersionWindow(Host& host, const std::string& firmware_version,
                             const std::string& homepage, QWidget* parent)
    : QWidget(parent, Qt::Dialog) {
  setObjectName("ZENTA_VERFORM");
  setWindowTitle("Quillon V3");
  setWindowModality(Qt::ApplicationModal);
  QPalette white = palette();
  white.setColor(QPalette::Window, Qt::white);
  white.setColor(QPalette::WindowText, Qt::black);
  setPalette(white);
  setAutoFillBackground(true);
  setFixedSize(px(5070), px(3375));

  QLabel* picture = make_label(this, "Picture1", "", {12, 12, 96, 96});
  picture->setPixmap(QPixmap(":/zenta/zenta-unit.png"));
  picture->setScaledContents(true);

  QLabel* title = make_label(this, "Label2", "ZENTA Control Panel", {120, 12, 210, 24});
  QFont bold = title->font();
  bold.setBold(true);
  bold.setPointSizeF(bold.pointSizeF() * 1.2);
  title->setFont(bold);
  make_label(this, "Label4", panel_version_text().c_str(), {120, 40, 210, 18});
  make_label(this, "Label1", firmware_version_text(firmware_version).c_str(), {120, 60, 210, 18});
  ClickableLabel* maker = make_link(this, "Label3", "Korvan Works", {120, 86, 210, 18});
  QPalette link = maker->palette();
  link.setColor(QPalette::WindowText, QColor(0, 0, 192));
  maker->setPalette(link);
  QFont underlined = maker->font();
  underlined.setUnderline(true);
  maker->setFont(underlined);
  connect(maker, &ClickableLabel::clicked, this,
          [&host, homepage] { open_homepage(host, homepage); });
  make_label(this, "Label5", kHomePageUrl, {120, 106, 210, 18})
      ->setToolTip(QString::fromStdString(homepage));
  QLabel* notice = make_label(this, "Label6", kNoticeLine, {12, 134, 314, 40});
  notice->setWordWrap(true);

  QPushButton* ok = make_button(this, "Command1", "OK", nullptr, {246, 184, 80, 30});
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, &QWidget::close);
}

}  // namespace zenta
