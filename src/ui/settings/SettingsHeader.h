#pragma once

#include <QWidget>

namespace morvane {

/// The program's mark, as decoration, and the window's title.
class SettingsHeader : public QWidget {
    Q_OBJECT
public:
    explicit SettingsHeader(QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
};

} // namespace morvane
