#include "oxFileIOService.h"

#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

// Reads the file in pieces and reports each new per cent below 100: a size that is wrong, or that
// changes meanwhile, does not tell the end.
template<class Report>
bool readInPieces(QFile *file, const Report &report)
{
    if (!file->seek(0))
        return false;
    const qint64 fileSize = std::max<qint64>(1, file->size());
    QByteArray piece(64 * 1024, Qt::Uninitialized);
    int reported = 0;
    for (;;) {
        const qint64 size = file->read(piece.data(), piece.size());
        if (size <= 0)
            return size == 0;
        const auto percent = static_cast<int>(std::min<qint64>(99, file->pos() * 100 / fileSize));
        if (percent > reported) {
            reported = percent;
            report(percent);
        }
    }
}

} // namespace

oxFileIOService::oxFileIOService(QObject *parent)
    : oxBaseService(parent)
{}

oxFileIOService::~oxFileIOService() = default;

bool oxFileIOService::newFile()
{
    return call<bool>(staticMetaObject, "newFile()");
}

bool oxFileIOService::loadFile(const QString &file)
{
    QFile source(file);
    if (!QFileInfo(file).isFile() || !source.open(QIODevice::ReadOnly))
        return false;

    Q_EMIT progress(0);
    if (!readInPieces(&source, [this](int percent) { Q_EMIT progress(percent); }))
        return false;
    Q_EMIT progress(100);

    // The upload: the pieces go nowhere as long as there is no connection to send them through.
    return readInPieces(&source, [this](int) { Q_EMIT progress(100); });
}

bool oxFileIOService::saveFile(const QString &file)
{
    return call<bool>(staticMetaObject, "saveFile(QString)", file);
}

QString oxFileIOService::getTARNDir()
{
    return call<QString>(staticMetaObject, "getTARNDir()");
}

QString oxFileIOService::getTARNDataDir()
{
    return call<QString>(staticMetaObject, "getTARNDataDir()");
}

QString oxFileIOService::getTARNExamplesDir()
{
    return call<QString>(staticMetaObject, "getTARNExamplesDir()");
}

QString oxFileIOService::getImageReadFilter()
{
    return call<QString>(staticMetaObject, "getImageReadFilter()");
}

QString oxFileIOService::getImageWriteFilter()
{
    return call<QString>(staticMetaObject, "getImageWriteFilter()");
}
