#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "SignalTo.h"
#include "oxFrameReader.h"
#include "oxFrameWriter.h"

namespace {

constexpr QSize largest(640, 480);
constexpr int pageSize = 4096;

// Fills the frame with its number.
quint64 writeFrame(oxFrameWriter *writer, const QSize &size, quint32 value)
{
    auto *pixels = reinterpret_cast<quint32 *>(writer->begin(size));
    if (!pixels)
        return 0;
    std::fill_n(pixels, size.width() * size.height(), value);
    return writer->finish();
}

bool isFilledWith(const QImage &frame, QRgb value)
{
    const auto *pixels = reinterpret_cast<const QRgb *>(frame.constBits());
    return std::all_of(pixels, pixels + frame.width() * frame.height(),
                       [=](QRgb pixel) { return (pixel & 0xffffff) == value; });
}

// The other process: says the name and writes frames of changing size until it is killed, or, with
// "half", stops in the middle of its second one.
int writeUntilKilled(const QString &mode)
{
    oxFrameWriter writer;
    if (!writer.open(largest))
        return 1;
    writeFrame(&writer, largest, 1);
    if (mode == QLatin1String("half"))
        std::memset(writer.begin(largest), 0x77, 1000);
    puts(qPrintable(writer.name()));
    fflush(stdout);
    if (mode == QLatin1String("half")) {
        for (;;)
            pause();
    }
    for (quint32 i = 2;; ++i)
        writeFrame(&writer, largest - QSize(0, static_cast<int>(i % 7)), i);
}

// A memory of any content, as another program could make it.
class ForeignMemory
{
public:
    ForeignMemory(int size, unsigned seals)
        : m_descriptor(memfd_create("foreign", MFD_CLOEXEC | MFD_ALLOW_SEALING))
        , m_size(static_cast<size_t>(size))
    {
        if (ftruncate(m_descriptor, size) != 0 || fcntl(m_descriptor, F_ADD_SEALS, seals) != 0)
            qFatal("no memory: %s", strerror(errno));
        m_data = mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_SHARED, m_descriptor, 0);
    }
    ~ForeignMemory()
    {
        munmap(m_data, m_size);
        close(m_descriptor);
    }
    Q_DISABLE_COPY(ForeignMemory)

    void *data() const { return m_data; }
    QString name() const
    {
        return QStringLiteral("/proc/%1/fd/%2").arg(QCoreApplication::applicationPid()).arg(m_descriptor);
    }

private:
    int m_descriptor;
    size_t m_size;
    void *m_data;
};

} // namespace

/// The two ends of the memory that frames go through, also with a writer in another process.
class tst_oxFrameMemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();

    void readerGetsWhatTheWriterWrote();
    void readerGetsTheNewestFrameAndOnce();
    void frameMayHaveAnotherSizeEachTime();
    void frameIsInvisibleUntilItIsFinished();
    void frameWithoutRoomIsRefused_data();
    void frameWithoutRoomIsRefused();
    void lateReaderGetsTheLastFrame();
    void pixelsAreWrittenOverTheOldOnes();
    void copyOfAFrameKeepsItsPixels();
    void imageOfAnotherFormatIsReplaced();

    void writerNeedsMemory();
    void writerNeedsASensibleSize();
    void writerMayOpenAgain();
    void readerNeedsAWriter();
    void readerThatAttachesElsewhereStartsAnew();
    void readerKeepsTheLastFrameOfAWriterThatIsGone();
    void lastOneOutRemovesTheMemory();
    void othersHaveNoAccess();
    void childrenDoNotInheritIt();
    void nobodyCanCutItOff();

    void frameIsReadThoughTheWriterIsQuicker();
    void frameThatIsBeingReplacedIsNotTaken();
    void framesOfAFastWriterAreWhole();
    void writerThatStopsInAFrameKeepsNobodyWaiting();
    void killedWriterLeavesNoMemory_data();
    void killedWriterLeavesNoMemory();

    void readerRefusesWhatHoldsNoFrames_data();
    void readerRefusesWhatHoldsNoFrames();
    void readerRefusesFiles_data();
    void readerRefusesFiles();
    void readerSurvivesAnyHeader_data();
    void readerSurvivesAnyHeader();

private:
    void startWriter(const char *mode);

    QProcess m_other;
    QString m_name; // its memory's
};

void tst_oxFrameMemory::cleanup()
{
    if (m_other.state() != QProcess::NotRunning) {
        m_other.kill();
        m_other.waitForFinished();
    }
}

void tst_oxFrameMemory::startWriter(const char *mode)
{
    m_other.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(mode)});
    QVERIFY(QTest::qWaitFor([this] { return m_other.canReadLine(); }, 60000));
    m_name = QString::fromLatin1(m_other.readLine().trimmed());
}

void tst_oxFrameMemory::readerGetsWhatTheWriterWrote()
{
    oxFrameWriter writer;
    QVERIFY2(writer.open(largest), qPrintable(writer.errorString()));
    oxFrameReader reader;
    QVERIFY2(reader.attach(writer.name()), qPrintable(reader.errorString()));
    QImage frame;
    QVERIFY(!reader.read(&frame));

    QImage picture(321, 123, QImage::Format_RGB32);
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            picture.setPixel(x, y, qRgb(x % 256, y, x * y % 256));
    }
    std::memcpy(writer.begin(picture.size()), picture.constBits(), static_cast<size_t>(picture.sizeInBytes()));
    QCOMPARE(writer.finish(), quint64(1));

    QVERIFY(reader.read(&frame));
    QCOMPARE(frame.format(), QImage::Format_RGB32);
    QCOMPARE(frame, picture);
}

void tst_oxFrameMemory::readerGetsTheNewestFrameAndOnce()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    for (quint32 i = 1; i <= 5; ++i)
        QCOMPARE(writeFrame(&writer, largest, i), quint64(i));

    QImage frame;
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 5));
    QVERIFY(!reader.read(&frame));
    QCOMPARE(writeFrame(&writer, largest, 6), quint64(6));
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 6));
}

void tst_oxFrameMemory::frameMayHaveAnotherSizeEachTime()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    QImage frame;
    for (const QSize &size : {largest, QSize(1, 1), QSize(480, 640), QSize(3, 7)}) {
        QVERIFY(writeFrame(&writer, size, 0x123456));
        QVERIFY(reader.read(&frame));
        QCOMPARE(frame.size(), size);
        QVERIFY(isFilledWith(frame, 0x123456));
    }
}

void tst_oxFrameMemory::frameIsInvisibleUntilItIsFinished()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    QImage frame;
    writeFrame(&writer, largest, 1);
    writer.begin(largest);
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 1));
    QVERIFY(!reader.read(&frame));
    writer.finish();
    QVERIFY(reader.read(&frame));
}

void tst_oxFrameMemory::frameWithoutRoomIsRefused_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<bool>("hasRoom");
    QTest::newRow("largest") << largest << true;
    QTest::newRow("as many pixels") << QSize(480, 640) << true;
    QTest::newRow("too large") << QSize(641, 481) << false;
    QTest::newRow("empty") << QSize(0, 10) << false;
    QTest::newRow("negative") << QSize(-10, -10) << false;
    QTest::newRow("wider than any frame") << QSize(0x8000, 1) << false;
    QTest::newRow("higher than any frame") << QSize(1, 0x8000) << false;
    QTest::newRow("beyond an int") << QSize(0x7fffffff, 0x7fffffff) << false;
}

void tst_oxFrameMemory::frameWithoutRoomIsRefused()
{
    QFETCH(QSize, size);
    QFETCH(bool, hasRoom);
    oxFrameWriter writer;
    QVERIFY(!writer.hasRoomFor(size));
    QVERIFY(!writer.begin(size));
    QVERIFY(writer.open(largest));

    QCOMPARE(writer.hasRoomFor(size), hasRoom);
    QCOMPARE(writer.begin(size) != nullptr, hasRoom);
}

void tst_oxFrameMemory::lateReaderGetsTheLastFrame()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    writeFrame(&writer, largest, 1);
    writeFrame(&writer, largest, 2);
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    QImage frame;
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 2));
}

void tst_oxFrameMemory::pixelsAreWrittenOverTheOldOnes()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    QImage frame;
    writeFrame(&writer, largest, 1);
    QVERIFY(reader.read(&frame));
    const uchar *pixels = frame.constBits();
    writeFrame(&writer, largest, 2);
    QVERIFY(reader.read(&frame));
    QCOMPARE(frame.constBits(), pixels);
}

void tst_oxFrameMemory::copyOfAFrameKeepsItsPixels()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    QImage frame;
    writeFrame(&writer, largest, 1);
    QVERIFY(reader.read(&frame));
    const QImage copy = frame;
    writeFrame(&writer, largest, 2);
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(copy, 1));
    QVERIFY(isFilledWith(frame, 2));
}

void tst_oxFrameMemory::imageOfAnotherFormatIsReplaced()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    for (const QImage::Format format : {QImage::Format_Grayscale8, QImage::Format_ARGB32, QImage::Format_RGBA64}) {
        writeFrame(&writer, largest, 0x123456);
        QImage frame(largest, format);
        QVERIFY(reader.read(&frame));
        QCOMPARE(frame.format(), QImage::Format_RGB32);
        QVERIFY(isFilledWith(frame, 0x123456));
    }
}

void tst_oxFrameMemory::writerNeedsMemory()
{
    rlimit before;
    getrlimit(RLIMIT_FSIZE, &before);
    const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{100000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    oxFrameWriter writer;
    const bool isOpen = writer.open(largest);
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, ignored);

    QVERIFY(!isOpen);
    QCOMPARE(writer.errorString(), qt_error_string(EFBIG));
    QCOMPARE(writer.name(), QString());
    QVERIFY(!writer.begin(largest));
    QVERIFY(writer.open(largest));
    QCOMPARE(writer.errorString(), QString());
}

void tst_oxFrameMemory::writerNeedsASensibleSize()
{
    oxFrameWriter writer;
    QVERIFY(!writer.open(QSize(0, 0)));
    QVERIFY(!writer.open(QSize(0x7fff, 0x7fff)));
    QCOMPARE(writer.errorString(), QStringLiteral("no memory holds frames of 32767x32767"));
    QVERIFY(!writer.open(QSize(20000, 20000))); // one would have room, two have not
    QCOMPARE(writer.errorString(), QStringLiteral("no memory holds frames of 20000x20000"));
    QCOMPARE(writer.name(), QString());
}

void tst_oxFrameMemory::writerMayOpenAgain()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    writeFrame(&writer, largest, 1);
    oxFrameReader first;
    QVERIFY(first.attach(writer.name()));
    QVERIFY(writer.open(2 * largest));
    oxFrameReader second;
    QVERIFY(second.attach(writer.name()));
    QImage frame;
    QVERIFY(!second.read(&frame));

    QCOMPARE(writeFrame(&writer, 2 * largest, 2), quint64(1));
    QVERIFY(second.read(&frame));
    QCOMPARE(frame.size(), 2 * largest);
    QVERIFY(first.read(&frame));
    QVERIFY(isFilledWith(frame, 1));
    QVERIFY(!writer.open(QSize(0, 0)));
    QCOMPARE(writer.name(), QString());
    QVERIFY(!writer.hasRoomFor(QSize(1, 1)));
}

void tst_oxFrameMemory::readerNeedsAWriter()
{
    oxFrameReader reader;
    QImage frame;
    QVERIFY(!reader.read(&frame));
    for (const QString &name : {QString(), QStringLiteral("/nowhere/frames"), QStringLiteral("/proc/self/fd/999999")}) {
        QVERIFY(!reader.attach(name));
        QCOMPARE(reader.errorString(), QStringLiteral("'%1' holds no frames").arg(name));
        QVERIFY(!reader.isAttached());
        QVERIFY(!reader.read(&frame));
    }
    QVERIFY(frame.isNull());

    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    QVERIFY(reader.attach(writer.name()));
    QCOMPARE(reader.errorString(), QString());
}

void tst_oxFrameMemory::readerThatAttachesElsewhereStartsAnew()
{
    oxFrameWriter first;
    oxFrameWriter second;
    QVERIFY(first.open(largest));
    QVERIFY(second.open(largest));
    QVERIFY(first.name() != second.name());
    writeFrame(&first, largest, 10);
    writeFrame(&second, largest, 20);
    oxFrameReader reader;
    QImage frame;
    QVERIFY(reader.attach(first.name()));
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 10));
    QVERIFY(reader.attach(second.name()));
    QVERIFY(reader.isAttached());
    QCOMPARE(reader.errorString(), QString());
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 20));
    QVERIFY(!reader.attach(QString()));
    QVERIFY(!reader.isAttached());
    QVERIFY(!reader.read(&frame));
}

void tst_oxFrameMemory::readerKeepsTheLastFrameOfAWriterThatIsGone()
{
    oxFrameReader reader;
    QString name;
    {
        oxFrameWriter writer;
        QVERIFY(writer.open(largest));
        name = writer.name();
        QVERIFY(reader.attach(name));
        writeFrame(&writer, largest, 1);
    }
    QImage frame;
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 1));
    oxFrameReader late;
    QVERIFY(!late.attach(name));
}

// Neither is left open, nor mapped.
void tst_oxFrameMemory::lastOneOutRemovesTheMemory()
{
    const auto uses = [] {
        QFile maps(QStringLiteral("/proc/self/maps"));
        if (!maps.open(QIODevice::ReadOnly))
            qFatal("cannot read the maps");
        int count = maps.readAll().count("oxFrames");
        const QStringList files = QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System);
        for (const QString &file : files)
            count += QFile::symLinkTarget(QStringLiteral("/proc/self/fd/") + file).contains(QLatin1String("oxFrames"));
        return count;
    };
    {
        oxFrameWriter writer;
        QVERIFY(writer.open(largest));
        oxFrameReader reader;
        QVERIFY(reader.attach(writer.name()));
        QVERIFY(uses() >= 4);
        reader.detach();
        QCOMPARE(uses(), 2);
        QVERIFY(writer.open(2 * largest));
        QCOMPARE(uses(), 2);
        QVERIFY(!writer.open(QSize(0, 0)));
        QCOMPARE(uses(), 0);
        QVERIFY(writer.open(largest));
    }
    QCOMPARE(uses(), 0);
}

void tst_oxFrameMemory::othersHaveNoAccess()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    struct stat status;
    QCOMPARE(stat(qPrintable(writer.name()), &status), 0);
    QCOMPARE(status.st_mode & 0777U, 0600U);
    QCOMPARE(status.st_uid, getuid());
}

// A program that the process starts would keep the memory of one that ended long ago.
void tst_oxFrameMemory::childrenDoNotInheritIt()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    QProcess child;
    child.start(QStringLiteral("ls"), {QStringLiteral("-l"), QStringLiteral("/proc/self/fd")});
    QVERIFY(child.waitForFinished(60000));
    const QByteArray files = child.readAllStandardOutput();
    QVERIFY(files.contains("0 -> "));
    QVERIFY2(!files.contains("oxFrames"), files);
}

// A reader would be killed that reads beyond the new end.
void tst_oxFrameMemory::nobodyCanCutItOff()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    QFile other(writer.name());
    QVERIFY(other.open(QIODevice::ReadWrite));
    const qint64 size = other.size();
    QVERIFY(!other.resize(0));
    QVERIFY(!other.resize(2 * size));
    QCOMPARE(other.size(), size);
}

// It replaces the frame, and the one after it, while the reader makes room for a copy.
void tst_oxFrameMemory::frameIsReadThoughTheWriterIsQuicker()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    writeFrame(&writer, largest, 1);

    const auto writeTwo = [](void *data) {
        for (quint32 value : {2, 3})
            writeFrame(static_cast<oxFrameWriter *>(data), largest, value);
    };
    quint32 pixelOfAnother = 0;
    QImage frame(reinterpret_cast<uchar *>(&pixelOfAnother), 1, 1, QImage::Format_RGB32, writeTwo, &writer);
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 3));
    QVERIFY(!reader.read(&frame));
}

// The writer is in the middle of the frame after the next one, which takes its place.
void tst_oxFrameMemory::frameThatIsBeingReplacedIsNotTaken()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(writer.name()));
    writeFrame(&writer, largest, 1);

    const auto writeOneAndAHalf = [](void *data) {
        auto *other = static_cast<oxFrameWriter *>(data);
        writeFrame(other, largest, 2);
        std::memset(other->begin(largest), 0x77, 1000);
    };
    quint32 pixelOfAnother = 0;
    QImage frame(reinterpret_cast<uchar *>(&pixelOfAnother), 1, 1, QImage::Format_RGB32, writeOneAndAHalf, &writer);
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 2));
}

// The colour changes from frame to frame, so that one made of two shows; so does the size.
void tst_oxFrameMemory::framesOfAFastWriterAreWhole()
{
    startWriter("fast");
    oxFrameReader reader;
    QVERIFY2(reader.attach(m_name), qPrintable(reader.errorString()));
    QImage frame;
    int count = 0;
    QElapsedTimer timer;
    timer.start();
    while (count < 200 && timer.elapsed() < 60000) {
        if (!reader.read(&frame))
            continue;
        const QRgb value = frame.pixel(0, 0) & 0xffffff;
        QVERIFY2(isFilledWith(frame, value), qPrintable(QString::number(value)));
        QCOMPARE(frame.height(), value == 1 ? largest.height() : largest.height() - static_cast<int>(value % 7));
        ++count;
    }
    QVERIFY2(count >= 20, qPrintable(QString::number(count)));
}

void tst_oxFrameMemory::writerThatStopsInAFrameKeepsNobodyWaiting()
{
    startWriter("half");
    signalTo(m_other, SIGSTOP);
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));
    QImage frame;
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 1));
    QVERIFY(!reader.read(&frame));
    QVERIFY(isFilledWith(frame, 1));
}

void tst_oxFrameMemory::killedWriterLeavesNoMemory_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::newRow("killed in a frame") << QByteArray("half");
    QTest::newRow("killed anywhere") << QByteArray("fast");
}

void tst_oxFrameMemory::killedWriterLeavesNoMemory()
{
    QFETCH(QByteArray, mode);
    startWriter(mode);
    oxFrameReader reader;
    QImage frame;
    QVERIFY(reader.attach(m_name));
    QVERIFY(QTest::qWaitFor([&] { return reader.read(&frame); }, 60000)); // a fast writer may be ahead
    m_other.kill();
    QVERIFY(m_other.waitForFinished());

    reader.read(&frame); // the last one is still whole
    QVERIFY(isFilledWith(frame, frame.pixel(0, 0) & 0xffffff));
    QVERIFY(!reader.attach(m_name));
}

void tst_oxFrameMemory::readerRefusesWhatHoldsNoFrames_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QByteArray>("start");
    const QByteArray magic("oxFM");
    const QByteArray version("\1\0\0\0", 4);
    QTest::newRow("empty") << 1000000 << QByteArray();
    QTest::newRow("another magic") << 1000000 << "OXFM" + version;
    QTest::newRow("another version") << 1000000 << magic + QByteArray("\2\0\0\0", 4);
    QTest::newRow("a byte") << 1 << QByteArray("o");
    QTest::newRow("no room for frames") << 3 * pageSize - 1 << magic + version;
}

void tst_oxFrameMemory::readerRefusesWhatHoldsNoFrames()
{
    QFETCH(int, size);
    QFETCH(QByteArray, start);
    const ForeignMemory memory(size, F_SEAL_SHRINK);
    std::memcpy(memory.data(), start.constData(), static_cast<size_t>(start.size()));

    oxFrameReader reader;
    QVERIFY(!reader.attach(memory.name()));
    QVERIFY(!reader.isAttached());
    QCOMPARE(reader.errorString(), QStringLiteral("'%1' holds no frames").arg(memory.name()));
}

void tst_oxFrameMemory::readerRefusesFiles_data()
{
    QTest::addColumn<QByteArray>("kind");
    QTest::newRow("on a disk") << QByteArray("disk");
    QTest::newRow("in memory, not sealed") << QByteArray("memory");
    QTest::newRow("folder") << QByteArray("folder");
    QTest::newRow("pipe that nobody writes to") << QByteArray("pipe");
}

// They hold frames, and could be cut off while those are read.
void tst_oxFrameMemory::readerRefusesFiles()
{
    QFETCH(QByteArray, kind);
    const ForeignMemory memory(1000000, F_SEAL_GROW);
    std::memcpy(memory.data(), "oxFM\1\0\0", 8);
    const QTemporaryDir folder;
    QString name = folder.filePath(QStringLiteral("frames"));
    if (kind == "disk")
        QVERIFY(QFile::copy(memory.name(), name));
    else if (kind == "memory")
        name = memory.name();
    else if (kind == "folder")
        QVERIFY(QDir().mkdir(name));
    else
        QCOMPARE(mkfifo(qPrintable(name), 0600), 0);

    oxFrameReader reader;
    QVERIFY(!reader.attach(name));
    QCOMPARE(reader.errorString(), QStringLiteral("'%1' holds no frames").arg(name));
}

void tst_oxFrameMemory::readerSurvivesAnyHeader_data()
{
    QTest::addColumn<quint32>("seed");
    for (quint32 seed = 0; seed < 20; ++seed)
        QTest::addRow("%u", seed) << seed;
}

// Half of the numbers are consistent, so that sizes are reached, and those are wild.
void tst_oxFrameMemory::readerSurvivesAnyHeader()
{
    QFETCH(quint32, seed);
    struct Slot
    {
        quint64 sequence;
        qint32 width;
        qint32 height;
    };
    struct Header
    {
        quint32 magic;
        quint32 version;
        quint64 newest;
        Slot slots[2];
    };

    const ForeignMemory memory(3 * pageSize, F_SEAL_SHRINK); // room for 1024 pixels
    auto *header = static_cast<Header *>(memory.data());
    std::memcpy(&header->magic, "oxFM", 4);
    header->version = 1;
    oxFrameReader reader;
    QVERIFY(reader.attach(memory.name()));

    QRandomGenerator random(seed);
    const auto wildSide = [&random] {
        const QVector<qint32> sides{0, -1, 1, 32, 1024, 0x7fff, 0x8000, 0x7fffffff, std::numeric_limits<qint32>::min()};
        return random.bounded(2) ? sides.at(random.bounded(sides.size())) : static_cast<qint32>(random.generate());
    };
    QImage frame;
    for (int i = 0; i < 2000; ++i) {
        header->newest = random.generate64();
        for (Slot &slot : header->slots)
            slot = {random.bounded(2) ? 2 * header->newest : random.generate64(), wildSide(), wildSide()};
        if (reader.read(&frame))
            QVERIFY2(frame.width() * frame.height() <= 1024, qPrintable(QString::number(frame.width())));
    }
    header->newest = 8;
    header->slots[0] = {16, 32, 32};
    QVERIFY(reader.read(&frame));
    QCOMPARE(frame.size(), QSize(32, 32));
}

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() == 2 && (arguments.at(1) == QLatin1String("half") || arguments.at(1) == QLatin1String("fast")))
        return writeUntilKilled(arguments.at(1));
    tst_oxFrameMemory test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_oxFrameMemory.moc"
