#include "ui/window/AboutBox.h"

#include <QApplication>
#include <QMessageBox>

using namespace Qt::StringLiterals;

namespace morvane {

void showAboutBox(QWidget &window, const QString &title)
{
    QString text = u"<h3>Morvane %1</h3>A desktop AI agent for one person on one computer."_s.arg(
        QApplication::applicationVersion().toHtmlEscaped());
    text += u"<p>Version %1 (build %2)"_s.arg(QApplication::applicationVersion().toHtmlEscaped(),
                                              qApp->property("buildNumber").toString());
    if (const QString origin = qApp->property("unusualUpdateOrigin").toString(); !origin.isEmpty())
        text += u"<p>Updates come from %1."_s.arg(origin.toHtmlEscaped());
    auto *box = new QMessageBox(QMessageBox::NoIcon, title, text, QMessageBox::Close, &window);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIconPixmap(QApplication::windowIcon().pixmap(64, 64));
    box->open();
}

} // namespace morvane
