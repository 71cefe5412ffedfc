#pragma once

#include "ui/conversation/SelectionReader.h"

#include <QClipboard>
#include <QList>
#include <QObject>
#include <QTimer>

namespace morvane {

/// Puts what is selected on a clipboard: at once where it is little, and otherwise in pieces that hold nobody
/// up.
class SelectionCopy : public QObject {
    Q_OBJECT
public:
    explicit SelectionCopy(QClipboard::Mode mode);

    /// Takes the place of what is still being copied.
    void copy(QList<SelectedRow> rows);

private:
    void goOn();

    QClipboard::Mode m_mode;
    QTimer m_timer;
    SelectionReader m_reader;
};

} // namespace morvane
