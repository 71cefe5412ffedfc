#pragma once

#include "MorvaneTest.h"
#include "UpdateWorld.h"

#include "support/SmallVolume.h"

#include <QTemporaryDir>
#include <functional>
#include <optional>

namespace morvane {

/// The whole road of an update: two builds of the program, an update host on this computer, and a user who
/// presses what they are offered.
class UpdateTest : public MorvaneTest {
protected:
    static QString available()
    {
        return QStringLiteral("Morvane " MORVANE_VERSION " (build 2) is available");
    }

    /// The program of the bundle in a home of its own, not started yet.
    MorvaneSession &prepareBundle() { return prepareBundle(world.program()); }
    /// The same for a bundle that lies elsewhere.
    MorvaneSession &prepareBundle(const QString &program);
    MorvaneSession &startBundle();

    /// The user looks for updates when the program itself has done so, which tells the same.
    static void check(MorvaneSession &morvane);
    /// And takes what there is.
    static void takeUpdate(MorvaneSession &morvane);
    /// The same without waiting for the program's own look.
    static void takeUpdateAtOnce(MorvaneSession &morvane);
    static void pressInSheet(MorvaneSession &morvane, const QString &sheet, const QString &button);

    /// The program goes on, the old one, and its bundle is as it was, with nothing beside it.
    void expectOldProgram(MorvaneSession &morvane, const QString &failure);
    /// The bundle is that of build 1, to the last bit.
    void expectOldBundle() const { EXPECT_EQ(world.fingerprint(), m_laid); }
    /// A program that was started from the bundle says that build 2 is the latest.
    static void expectNewBuild(MorvaneSession &morvane, const AccessibleProgram &program);

    /// Looks at the program that came by itself in the place of the one that was started here, and ends it.
    void withRelaunched(const MorvaneSession &morvane,
                        const std::function<void(const AccessibleProgram &)> &look);

    /// Lays the bundle on a volume of its own, with so much space besides.
    void layOnVolume(qint64 space);

    QTemporaryDir folder;
    UpdateWorld world{folder.path()};
    std::optional<SmallVolume> volume;

private:
    static void end(qint64 pid);

    const QByteArray m_laid = world.fingerprint();
};

} // namespace morvane
