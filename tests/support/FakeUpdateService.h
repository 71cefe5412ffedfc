#pragma once

#include "async/Sleep.h"
#include "update/UpdateInstallError.h"
#include "update/UpdateService.h"

#include <QDir>
#include <QStringList>
#include <exception>

namespace morvane {

/// A manifest of a newer version.
inline UpdateInfo sampleUpdate(const QString &version = QStringLiteral("1.3"), qint64 build = 7)
{
    UpdateInfo update;
    update.version = version;
    update.build = build;
    update.date = QStringLiteral("2026-11-22");
    update.dmg = QStringLiteral("https://updates.example/downloads/image.tar.zst");
    update.sha256 = QString(64, u'a');
    update.notes = QStringList{QStringLiteral("Faster."), QStringLiteral("Safer.")};
    return update;
}

/// An update host and a disk whose answers a test decides. Runs version 1.2, build 5.
class FakeUpdateService final : public UpdateService {
public:
    const ProgramVersion &current() const override { return running; }
    Task<UpdateInfo> fetchLatest() override
    {
        ++checks;
        if (checkTime.count() > 0)
            co_await sleepFor(checkTime);
        if (checkFailure)
            std::rethrow_exception(checkFailure);
        co_return manifest;
    }
    Task<std::shared_ptr<ImageFile>> downloadUpdateDMG(QUrl url,
                                                       std::function<void(double)> onProgress) override
    {
        downloads.append(url);
        progress = onProgress;
        for (const double step : steps)
            onProgress(step);
        if (downloadTime.count() > 0)
            co_await sleepFor(downloadTime);
        if (!downloadFailure.isEmpty())
            throw UpdateInstallError(downloadFailure);
        auto image = std::make_shared<ImageFile>(QDir::tempPath());
        lastImage = image->image().path;
        co_return image;
    }
    bool isGenuine(const UpdateImage &, const UpdateInfo &) const override { return genuine; }
    Task<void> stageAndScheduleRelaunch(QString image) override
    {
        installed.append(image);
        if (!installFailure.isEmpty())
            throw UpdateInstallError(installFailure);
        co_return;
    }
    void terminate() override { ++terminations; }

    ProgramVersion running{QStringLiteral("1.2"), 5};
    UpdateInfo manifest = sampleUpdate(QStringLiteral("1.2"), 5); ///< What runs, as a start.
    std::exception_ptr checkFailure;
    Clock::Duration checkTime{};
    QList<double> steps;
    Clock::Duration downloadTime{};
    QString downloadFailure;
    bool genuine = true;
    QString installFailure;

    int checks = 0;
    QList<QUrl> downloads;
    std::function<void(double)> progress; ///< Of what is under way; not to be called after its end.
    QString lastImage;
    QStringList installed;
    int terminations = 0;
};

} // namespace morvane
