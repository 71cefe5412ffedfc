#pragma once

#include "support/AppFixture.h"

#include "ui/controls/SegmentedPicker.h"
#include "ui/settings/SettingsView.h"

#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <algorithm>
#include <memory>

namespace morvane {

/// The settings window on an application model with recorded surroundings.
class SettingsViewFixture : public AppFixture {
protected:
    SettingsViewFixture() { open(); }
    ~SettingsViewFixture() override { view.reset(); }

    void open()
    {
        view = std::make_unique<SettingsView>(*settingsServices, model->localModel(), toolServerList.manager,
                                              announcer, nullptr);
        view->show();
        settle();
    }

    template <class Widget> Widget *named(const QString &accessibleName) const
    {
        for (Widget *widget : view->findChildren<Widget *>())
            if (widget->isVisible() && widget->accessibleName() == accessibleName)
                return widget;
        return nullptr;
    }

    /// Whether a visible label reads so.
    bool shows(const QString &text) const
    {
        const auto labels = view->findChildren<QLabel *>();
        return std::any_of(labels.begin(), labels.end(), [&text](const QLabel *label) {
            return label->isVisible() && label->text() == text;
        });
    }

    void choose(ProviderID provider)
    {
        const auto *const place = std::find(allProviders.begin(), allProviders.end(), provider);
        auto *picker = named<SegmentedPicker>(QStringLiteral("Provider"));
        ASSERT_NE(picker, nullptr);
        Q_EMIT picker->chosen(static_cast<int>(place - allProviders.begin()));
        settle();
    }

    static void retype(QLineEdit *field, const QString &text)
    {
        ASSERT_NE(field, nullptr);
        field->clear();
        QTest::keyClicks(field, text);
    }

    std::unique_ptr<SettingsView> view;
};

} // namespace morvane
