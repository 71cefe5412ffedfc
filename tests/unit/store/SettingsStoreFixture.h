#pragma once

#include "store/SettingsStore.h"
#include "support/FakeKeychain.h"
#include "support/TemporaryHome.h"

#include <gtest/gtest.h>
#include <memory>

namespace morvane {

/// A settings store on a file of the test's own, which can be written before the store opens it.
class SettingsStoreFixture : public testing::Test {
protected:
    SettingsStore &open()
    {
        m_store.reset();
        m_store = std::make_unique<SettingsStore>(path, keychain);
        QObject::connect(m_store.get(), &SettingsStore::changed, m_store.get(), [this] { ++changes; });
        return *m_store;
    }
    void close() { m_store.reset(); }

    void put(const QVariantMap &values)
    {
        UserDefaults defaults(path);
        for (auto value = values.cbegin(); value != values.cend(); ++value)
            defaults.set(value.key(), *value);
        ASSERT_TRUE(defaults.write());
    }
    QVariant stored(const QString &key) const { return UserDefaults(path).value(key); }
    bool isStored(const QString &key) const { return UserDefaults(path).contains(key); }

    TemporaryHome home;
    const QString path = home.path("Morvane/Morvane.conf");
    FakeKeychain keychain;
    int changes = 0;

private:
    std::unique_ptr<SettingsStore> m_store;
};

} // namespace morvane
