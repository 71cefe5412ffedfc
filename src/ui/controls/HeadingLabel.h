#pragma once

#include <QLabel>

namespace morvane {

/// A bold heading that wraps. Assistive technology finds it as a heading.
class HeadingLabel : public QLabel {
    Q_OBJECT
public:
    enum class Level { welcome, title, section, group };

    HeadingLabel(const QString &text, Level level, QWidget *parent = nullptr);

    /// Use this instead of setText, so that the accessible name goes along.
    void setHeading(const QString &text);

protected:
    void changeEvent(QEvent *event) override;

private:
    void updateFont();

    Level m_level;
};

} // namespace morvane
