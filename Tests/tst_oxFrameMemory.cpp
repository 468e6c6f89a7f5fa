#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QRandomGenerator>
#include <QSharedMemory>
#include <QTemporaryDir>
#include <QtTest>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <memory>

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

// The other process: writes frames of changing size until it is killed, or, with "half", stops in
// the middle of its second one.
int writeUntilKilled(const QStringList &arguments)
{
    oxFrameWriter writer;
    if (!writer.open(arguments.at(2), largest))
        return 1;
    writeFrame(&writer, largest, 1);
    if (arguments.at(1) == QLatin1String("half")) {
        std::memset(writer.begin(largest), 0x77, 1000);
        puts("written");
        fflush(stdout);
        for (;;)
            pause();
    }
    puts("written");
    fflush(stdout);
    for (quint32 i = 2;; ++i)
        writeFrame(&writer, largest - QSize(0, static_cast<int>(i % 7)), i);
}

} // namespace

/// The two ends of the memory that frames go through, also with a writer in another process.
class tst_oxFrameMemory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
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

    void writerNeedsAFolder();
    void writerNeedsASensibleSize();
    void readerNeedsAWriter();
    void readerThatAttachesElsewhereStartsAnew();
    void lastOneOutRemovesTheMemory();
    void othersHaveNoAccess();

    void framesOfAFastWriterAreWhole();
    void writerThatStopsInAFrameKeepsNobodyWaiting();
    void killedWriterIsFollowedByAnother_data();
    void killedWriterIsFollowedByAnother();
    void memoryOfAnotherSizeIsReplacedUnlessInUse();

    void readerRefusesWhatHoldsNoFrames_data();
    void readerRefusesWhatHoldsNoFrames();
    void readerSurvivesAnyHeader_data();
    void readerSurvivesAnyHeader();

private:
    void startWriter(const char *mode);

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_name;
    QProcess m_other;
};

void tst_oxFrameMemory::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_name = m_folder->filePath(QStringLiteral("frames"));
}

void tst_oxFrameMemory::cleanup()
{
    if (m_other.state() != QProcess::NotRunning) {
        m_other.kill();
        m_other.waitForFinished();
    }
    QSharedMemory orphan;
    orphan.setNativeKey(m_name);
    if (orphan.attach())
        orphan.detach();
    m_folder.reset();
}

void tst_oxFrameMemory::startWriter(const char *mode)
{
    m_other.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(mode), m_name});
    QVERIFY(m_other.waitForReadyRead());
    QCOMPARE(m_other.readLine(), QByteArray("written\n"));
}

void tst_oxFrameMemory::readerGetsWhatTheWriterWrote()
{
    oxFrameWriter writer;
    QVERIFY2(writer.open(m_name, largest), qPrintable(writer.errorString()));
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
    QVERIFY(writer.open(m_name, largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));
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
    QVERIFY(writer.open(m_name, largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));
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
    QVERIFY(writer.open(m_name, largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));
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
    QTest::newRow("beyond an int") << QSize(0x7fffffff, 0x7fffffff) << false;
}

void tst_oxFrameMemory::frameWithoutRoomIsRefused()
{
    QFETCH(QSize, size);
    QFETCH(bool, hasRoom);
    oxFrameWriter writer;
    QVERIFY(!writer.hasRoomFor(size));
    QVERIFY(!writer.begin(size));
    QVERIFY(writer.open(m_name, largest));

    QCOMPARE(writer.hasRoomFor(size), hasRoom);
    QCOMPARE(writer.begin(size) != nullptr, hasRoom);
}

void tst_oxFrameMemory::lateReaderGetsTheLastFrame()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(m_name, largest));
    writeFrame(&writer, largest, 1);
    writeFrame(&writer, largest, 2);
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));
    QImage frame;
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 2));
}

void tst_oxFrameMemory::pixelsAreWrittenOverTheOldOnes()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(m_name, largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));
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
    QVERIFY(writer.open(m_name, largest));
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));
    QImage frame;
    writeFrame(&writer, largest, 1);
    QVERIFY(reader.read(&frame));
    const QImage copy = frame;
    writeFrame(&writer, largest, 2);
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(copy, 1));
    QVERIFY(isFilledWith(frame, 2));
}

void tst_oxFrameMemory::writerNeedsAFolder()
{
    oxFrameWriter writer;
    QVERIFY(!writer.open(QStringLiteral("/nowhere/frames"), largest));
    QVERIFY(!writer.errorString().isEmpty());
    QCOMPARE(writer.name(), QString());
    QVERIFY(!writer.begin(largest));
}

void tst_oxFrameMemory::writerNeedsASensibleSize()
{
    oxFrameWriter writer;
    QVERIFY(!writer.open(m_name, QSize(0, 0)));
    QVERIFY(!writer.open(m_name, QSize(0x7fff, 0x7fff)));
    QCOMPARE(writer.errorString(), QStringLiteral("no memory holds frames of 32767x32767"));
    QVERIFY(!QFile::exists(m_name));
}

void tst_oxFrameMemory::readerNeedsAWriter()
{
    oxFrameReader reader;
    QImage frame;
    QVERIFY(!reader.read(&frame));
    QVERIFY(!reader.attach(m_name));
    QVERIFY(!reader.errorString().isEmpty());
    QVERIFY(!reader.isAttached());
    QVERIFY(!reader.read(&frame));
    QVERIFY(frame.isNull());
}

void tst_oxFrameMemory::readerThatAttachesElsewhereStartsAnew()
{
    const QString otherName = m_name + QStringLiteral("2");
    oxFrameWriter first;
    oxFrameWriter second;
    QVERIFY(first.open(m_name, largest));
    QVERIFY(second.open(otherName, largest));
    writeFrame(&first, largest, 10);
    writeFrame(&second, largest, 20);
    oxFrameReader reader;
    QImage frame;
    QVERIFY(reader.attach(m_name));
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 10));
    QVERIFY(reader.attach(otherName));
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 20));
}

void tst_oxFrameMemory::lastOneOutRemovesTheMemory()
{
    oxFrameReader reader;
    QImage frame;
    {
        oxFrameWriter writer;
        QVERIFY(writer.open(m_name, largest));
        QVERIFY(reader.attach(m_name));
        writeFrame(&writer, largest, 1);
    }
    QVERIFY(reader.read(&frame));
    QVERIFY(QFile::exists(m_name));
    reader.detach();
    QVERIFY(!QFile::exists(m_name));
    QVERIFY(!reader.attach(m_name));
}

void tst_oxFrameMemory::othersHaveNoAccess()
{
    oxFrameWriter writer;
    QVERIFY(writer.open(m_name, largest));
    QFile table(QStringLiteral("/proc/sysvipc/shm"));
    QVERIFY(table.open(QIODevice::ReadOnly));
    const QByteArray creator = QByteArray::number(QCoreApplication::applicationPid());
    QList<QByteArray> modes;
    const QList<QByteArray> lines = table.readAll().split('\n');
    for (const QByteArray &line : lines) {
        const QList<QByteArray> columns = line.simplified().split(' '); // key shmid perms size cpid ...
        if (columns.value(4) == creator)
            modes.append(columns.value(2));
    }
    QCOMPARE(modes, QList<QByteArray>{"600"});
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
    kill(static_cast<pid_t>(m_other.processId()), SIGSTOP);
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));
    QImage frame;
    QVERIFY(reader.read(&frame));
    QVERIFY(isFilledWith(frame, 1));
    QVERIFY(!reader.read(&frame));
    QVERIFY(isFilledWith(frame, 1));
}

void tst_oxFrameMemory::killedWriterIsFollowedByAnother_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<bool>("readerStays");
    QTest::newRow("killed in a frame, reader stays") << QByteArray("half") << true;
    QTest::newRow("killed in a frame, no reader") << QByteArray("half") << false;
    QTest::newRow("killed anywhere, reader stays") << QByteArray("fast") << true;
}

void tst_oxFrameMemory::killedWriterIsFollowedByAnother()
{
    QFETCH(QByteArray, mode);
    QFETCH(bool, readerStays);
    startWriter(mode);
    oxFrameReader reader;
    QImage frame;
    if (readerStays) {
        QVERIFY(reader.attach(m_name));
        QVERIFY(QTest::qWaitFor([&] { return reader.read(&frame); })); // a fast writer may be ahead
    }
    m_other.kill();
    QVERIFY(m_other.waitForFinished());

    oxFrameWriter writer;
    QVERIFY2(writer.open(m_name, largest), qPrintable(writer.errorString()));
    if (!readerStays)
        QVERIFY(reader.attach(m_name));
    for (quint32 value : {0xabcdefU, 0xfedcbaU, 0x111111U}) {
        QVERIFY(writeFrame(&writer, largest, value));
        QVERIFY(reader.read(&frame));
        QVERIFY(isFilledWith(frame, value));
    }
}

void tst_oxFrameMemory::memoryOfAnotherSizeIsReplacedUnlessInUse()
{
    startWriter("half");
    m_other.kill();
    QVERIFY(m_other.waitForFinished());
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));

    oxFrameWriter writer;
    QVERIFY(!writer.open(m_name, 2 * largest));
    QVERIFY(!writer.errorString().isEmpty());
    reader.detach();
    QVERIFY2(writer.open(m_name, 2 * largest), qPrintable(writer.errorString()));
    QVERIFY(writer.hasRoomFor(2 * largest));
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
    QSharedMemory memory;
    memory.setNativeKey(m_name);
    QVERIFY(memory.create(size));
    std::memcpy(memory.data(), start.constData(), static_cast<size_t>(start.size()));

    oxFrameReader reader;
    QVERIFY(!reader.attach(m_name));
    QVERIFY(!reader.isAttached());
    QCOMPARE(reader.errorString(), QStringLiteral("'%1' holds no frames").arg(m_name));
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

    QSharedMemory memory;
    memory.setNativeKey(m_name);
    QVERIFY(memory.create(3 * pageSize)); // room for 1024 pixels
    auto *header = static_cast<Header *>(memory.data());
    std::memcpy(&header->magic, "oxFM", 4);
    header->version = 1;
    oxFrameReader reader;
    QVERIFY(reader.attach(m_name));

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
    if (arguments.size() == 3 && (arguments.at(1) == QLatin1String("half") || arguments.at(1) == QLatin1String("fast")))
        return writeUntilKilled(arguments);
    tst_oxFrameMemory test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_oxFrameMemory.moc"
