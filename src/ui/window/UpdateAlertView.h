#pragma once

#include "ui/sheets/Sheet.h"

namespace morvane {

class ScrollingText;
class SheetHeader;
class UpdateModel;
class WrappingButton;

/// Tells what a check for updates has found. Shows itself while the model has something to tell, in front of
/// every other sheet.
class UpdateAlertView : public Sheet {
    Q_OBJECT
public:
    /// `updates` must outlive the view; `window` owns it.
    UpdateAlertView(UpdateModel &updates, QWidget *window, SteadyNow now = &std::chrono::steady_clock::now);

protected:
    int rank() const override { return 2; }
    void returnPressed() override;
    void escapePressed() override;

private:
    void showAlert();
    WrappingButton *addButton(const QString &label, void (UpdateModel::*answer)());

    UpdateModel &m_updates;
    SheetHeader *m_header;
    ScrollingText *m_text;
    WrappingButton *m_later;
    WrappingButton *m_download;
    WrappingButton *m_install;
    WrappingButton *m_ok;
};

} // namespace morvane
