#pragma once

#include <QAccessibleWidget>

namespace morvane {

class MenuPicker;

/// What assistive technology finds of a MenuPicker. The toolkit's own interface tells the chosen text as the
/// name, so that nobody hears what is chosen here; and it has all rows below it even while they cannot be
/// seen.
class MenuPickerAccessible : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    explicit MenuPickerAccessible(MenuPicker *picker);

    void *interface_cast(QAccessible::InterfaceType type) override;
    int childCount() const override;
    QAccessibleInterface *child(int index) const override;
    int indexOfChild(const QAccessibleInterface *child) const override;
    QString text(QAccessible::Text type) const override;
    QAccessible::State state() const override;
    QStringList actionNames() const override;
    void doAction(const QString &name) override;

    // The chosen text, which cannot be edited.
    void selection(int index, int *start, int *end) const override;
    int selectionCount() const override { return 0; }
    void addSelection(int, int) override {}
    void removeSelection(int) override {}
    void setSelection(int, int, int) override {}
    int cursorPosition() const override { return 0; }
    void setCursorPosition(int) override {}
    QString text(int start, int end) const override;
    int characterCount() const override;
    QRect characterRect(int) const override { return {}; }
    int offsetAtPoint(const QPoint &) const override { return 0; }
    void scrollToSubstring(int, int) override {}
    QString attributes(int offset, int *start, int *end) const override;

private:
    MenuPicker &picker() const;
    bool isOpen() const;
};

} // namespace morvane
