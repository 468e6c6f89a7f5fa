#include "FileIOService.h"

#include <QDir>
#include <QEventLoop>
#include <QImageReader>
#include <QImageWriter>
#include <QScopedValueRollback>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <cstdio>
#include <memory>

#include "ModelFile.h"
#include "Renderer.h"
#include "oxPlatform.h"

namespace {

constexpr qint64 pieceSize = 65536;

bool fail(const char *what, const QString &file, const QString &why)
{
    fprintf(stderr, "oxFileIOService: couldn't %s '%s': %s\n", what, file.toUtf8().constData(),
            why.toUtf8().constData());
    return false;
}

QString folder(const char *name)
{
    const char *base = oxPlatform::getBaseDir();
    return base ? QDir(QString::fromUtf8(base)).absoluteFilePath(QString::fromLatin1(name)) : QString();
}

QString imageFilter(const QList<QByteArray> &formats)
{
    QStringList patterns;
    for (const QByteArray &format : formats)
        patterns.append(QStringLiteral("*.") + QString::fromLatin1(format));
    return QStringLiteral("Images (%1)").arg(patterns.join(QLatin1Char(' ')));
}

} // namespace

FileIOService::FileIOService(Scene *scene, Renderer *renderer, QObject *parent)
    : oxFileIOService(parent)
    , m_scene(scene)
    , m_renderer(renderer)
{}

FileIOService::~FileIOService() = default;

bool FileIOService::newFile()
{
    if (m_isLoading)
        return false;
    m_scene->clear();
    m_renderer->uploadAll(*m_scene);
    return true;
}

bool FileIOService::loadFile(const QString &file)
{
    if (m_isLoading)
        return fail("read", file, QStringLiteral("another file is being loaded"));
    const QScopedValueRollback<bool> loading(m_isLoading, true);

    Q_EMIT progress(0);
    Scene::Model model;
    QString error;
    if (!readModel(file, &model, &error))
        return fail("read", file, error);
    Q_EMIT progress(100);
    if (!upload(model))
        return fail("read", file, QStringLiteral("cancelled"));
    m_scene->show(model);
    m_renderer->uploadAll(*m_scene);
    return true;
}

bool FileIOService::saveFile(const QString &file)
{
    QString error;
    return ModelFile::write(*m_scene, file, &error) || fail("write", file, error);
}

QString FileIOService::getTARNDir()
{
    return folder("");
}

QString FileIOService::getTARNDataDir()
{
    return folder("data");
}

QString FileIOService::getTARNExamplesDir()
{
    return folder("examples");
}

QString FileIOService::getImageReadFilter()
{
    return imageFilter(QImageReader::supportedImageFormats());
}

QString FileIOService::getImageWriteFilter()
{
    return imageFilter(QImageWriter::supportedImageFormats());
}

bool FileIOService::readModel(const QString &file, Scene::Model *model, QString *error)
{
    std::atomic<bool> isCancelled = false;
    const auto report = [&](int percent) {
        QMetaObject::invokeMethod(
            this, [this, percent] { Q_EMIT progress(percent); }, Qt::QueuedConnection);
        return !isCancelled;
    };
    const std::unique_ptr<QThread> worker(QThread::create([&] { *model = ModelFile::read(file, report, error); }));
    QEventLoop loop;
    connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit);
    worker->start();
    loop.exec(); // ends early when the process is to end
    isCancelled = true;
    worker->wait();
    return !model->nodes.isEmpty();
}

// A piece each time that there is nothing else to do, so that frames and calls go on.
bool FileIOService::upload(const Scene::Model &model)
{
    QEventLoop loop;
    QTimer pieces;
    int node = 0;
    connect(&pieces, &QTimer::timeout, this, [&] {
        if (m_renderer->uploadSome(model.nodes.at(node).mesh, pieceSize) > 0)
            Q_EMIT progress(100);
        else if (++node == model.nodes.size())
            loop.exit(1);
    });
    pieces.start(0);
    return loop.exec() == 1;
}
