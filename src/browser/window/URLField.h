#pragma once

#include "browser/window/SelectingTextField.h"

namespace morvane {

/// The address field: shows the address of the page, unless the user writes another one.
class URLField : public SelectingTextField {
    Q_OBJECT
public:
    explicit URLField(QWidget *parent = nullptr);

    /// The page's address. What the user is writing stays.
    void showAddress(const QString &address);

Q_SIGNALS:
    /// Return: this is to be opened.
    void entered(const QString &text);
    /// Escape, when the page's address is shown.
    void left();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    bool event(QEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void showPageAddress();

    QString m_address;
};

} // namespace morvane
