#pragma once

#include <QWidget>

namespace morvane {

class DownloadProgressBar;
class NoteLabel;
struct UpdateInstallPhase;

/// How far the installation of an update is, in words and as a bar.
class UpdateProgress : public QWidget {
    Q_OBJECT
public:
    explicit UpdateProgress(QWidget *parent = nullptr);

    /// Tells the phase; `idle` is what stands there before the installation.
    void showPhase(const UpdateInstallPhase &phase, const QString &idle);

private:
    NoteLabel *m_text;
    DownloadProgressBar *m_bar;
};

} // namespace morvane
