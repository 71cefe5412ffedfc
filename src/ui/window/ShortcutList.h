#pragma once

#include <QDialog>
#include <QString>

class QListWidget;

namespace morvane {

/// The window with everything that keys do, to read line by line.
class ShortcutList : public QDialog {
    Q_OBJECT
public:
    explicit ShortcutList(QWidget *parent);

private:
    void addGroup(QListWidget &list, const QString &title);
    void add(QListWidget &list, const QString &keys, const QString &meaning);
};

} // namespace morvane
