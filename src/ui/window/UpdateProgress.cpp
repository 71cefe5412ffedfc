#include "ui/window/UpdateProgress.h"

#include "app/UpdateInstallPhase.h"
#include "base/LabelText.h"
#include "base/Overloaded.h"
#include "ui/controls/DownloadProgressBar.h"
#include "ui/controls/NoteLabel.h"

#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace morvane {

UpdateProgress::UpdateProgress(QWidget *parent)
    : QWidget(parent), m_text(new NoteLabel({}, NoteLabel::Tone::plain)),
      m_bar(new DownloadProgressBar([](std::optional<int> percent) {
          return u"Downloading the update, %1 percent done"_s.arg(percent.value_or(0));
      }))
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(4);
    column->addWidget(m_text);
    column->addWidget(m_bar);
}

void UpdateProgress::showPhase(const UpdateInstallPhase &phase, const QString &idle)
{
    using Phase = UpdateInstallPhase;
    const auto *downloading = std::get_if<Phase::Downloading>(&phase.state);
    const QString text = std::visit(Overloaded{
                                        [&](Phase::Idle) { return idle; },
                                        [](Phase::Downloading) { return u"Downloading…"_s; },
                                        [](Phase::Verifying) { return u"Installing… restarting soon"_s; },
                                        [](Phase::Installing) { return u"Installing… restarting soon"_s; },
                                        [](const Phase::Failed &failed) { return labelText(failed.text); },
                                    },
                                    phase.state);
    m_text->setText(text);
    m_text->setVisible(!text.isEmpty());
    m_bar->setVisible(downloading != nullptr);
    if (downloading)
        m_bar->showFraction(downloading->fraction);
}

} // namespace morvane
