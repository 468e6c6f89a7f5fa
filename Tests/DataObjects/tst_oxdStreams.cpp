#include <QDataStream>
#include <QIODevice>
#include <QTest>

#include <algorithm>

#include <malloc.h>

#include "MemoryLimit.h"
#include "oxdDataObjects.h"

namespace {

template<class Container>
QVector<quint64> ids(const Container &objects)
{
    QVector<quint64> result;
    for (const oxdObject &object : objects)
        result.append(object.objectId());
    return result;
}

/// A count, and ids that need not be as many.
QByteArray image(quint32 count, const QVector<quint64> &ids, QDataStream::ByteOrder order = QDataStream::BigEndian)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream.setByteOrder(order);
    stream << count;
    for (quint64 id : ids)
        stream << id;
    return data;
}

template<class Container>
Container containerOf(const QVector<quint64> &ids)
{
    Container objects;
    for (quint64 id : ids)
        objects.append(typename Container::value_type(id));
    return objects;
}

template<class Container>
void writesCountAndIds()
{
    for (const auto order : {QDataStream::BigEndian, QDataStream::LittleEndian}) {
        for (const QVector<quint64> &objects : {QVector<quint64>{}, {0x0102030405060708}, {1, 0, ~Q_UINT64_C(0)}}) {
            QByteArray data;
            QDataStream output(&data, QIODevice::WriteOnly);
            output.setByteOrder(order);
            output << containerOf<Container>(objects);
            QCOMPARE(data.toHex(), image(quint32(objects.size()), objects, order).toHex());

            QDataStream input(data);
            input.setByteOrder(order);
            Container read;
            input >> read;
            QCOMPARE(ids(read), objects);
            QVERIFY(input.atEnd());
            QCOMPARE(input.status(), QDataStream::Ok);
        }
    }
}

template<class Container>
void discardsOldContent(const QByteArray &data, const QVector<quint64> &expected)
{
    Container objects = containerOf<Container>({91, 92, 93, 94, 95});
    const Container shared = objects;
    QDataStream stream(data);
    stream >> objects;
    QCOMPARE(ids(objects), expected);
    QCOMPARE(shared.size(), 5);
}

qint64 bytesInUse()
{
    const struct mallinfo2 heap = mallinfo2();
    return qint64(heap.uordblks + heap.hblkhd);
}

/// Gives its bytes one after another, as a socket does.
class Pipe : public QIODevice
{
public:
    explicit Pipe(QByteArray data)
        : m_data(std::move(data))
    {
        open(ReadOnly | Unbuffered);
    }

    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return m_data.size() + QIODevice::bytesAvailable(); }

protected:
    qint64 readData(char *target, qint64 size) override
    {
        const qint64 taken = qMin<qint64>(size, m_data.size());
        std::copy_n(m_data.constData(), taken, target);
        m_data.remove(0, int(taken));
        return taken;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    QByteArray m_data;
};

} // namespace

class tst_oxdStreams : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesCountAndIdsInBothByteOrders();
    void imageIsByteForByte();
    void shortListGivesShortList();
    void shortVectorGivesAnnouncedSize();
    void announcedListWithoutElementsHasOne();
    void readingDiscardsOldContent();
    void emptyImageClears();
    void listEndsWithAPartialElement();
    void readingGoesOnAfterABadStatus();
    void readingLeavesWhatFollows();
    void readsFromSequentialDevice();
    void readsInsideTransaction();
    void withoutDeviceListAndVectorAreEmpty();
    void hostileCountOfListCostsNothing();
    void hostileCountOfVectorGivesEmptyVector();
    void vectorThatMemoryDoesNotHoldIsEmpty_data();
    void vectorThatMemoryDoesNotHoldIsEmpty();
};

void tst_oxdStreams::writesCountAndIdsInBothByteOrders()
{
    writesCountAndIds<QList<oxdBRDFMaterial>>();
    writesCountAndIds<QVector<oxdBRDFMaterial>>();
    writesCountAndIds<QList<oxdMaterial>>();
    writesCountAndIds<QVector<oxdNode>>();
}

void tst_oxdStreams::imageIsByteForByte()
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream << QList<oxdTimer>{oxdTimer(0x0102030405060708), oxdTimer()};
    QCOMPARE(data.toHex(),
             QByteArray("00000002"
                        "0102030405060708"
                        "0000000000000000"));

    data.clear();
    stream.device()->seek(0);
    stream.setByteOrder(QDataStream::LittleEndian);
    stream << QVector<oxdTimer>{oxdTimer(0x0102030405060708)};
    QCOMPARE(data.toHex(),
             QByteArray("01000000"
                        "0807060504030201"));
}

void tst_oxdStreams::shortListGivesShortList()
{
    QDataStream stream(image(3, {1, 2}));
    QList<oxdMaterial> objects;
    stream >> objects;
    QCOMPARE(ids(objects), QVector<quint64>({1, 2}));
    QCOMPARE(stream.status(), QDataStream::Ok);
}

void tst_oxdStreams::shortVectorGivesAnnouncedSize()
{
    QDataStream stream(image(3, {1, 2}));
    QVector<oxdMaterial> objects;
    stream >> objects;
    QCOMPARE(ids(objects), QVector<quint64>({1, 2, 0}));
    QCOMPARE(stream.status(), QDataStream::ReadPastEnd);
}

void tst_oxdStreams::announcedListWithoutElementsHasOne()
{
    QDataStream stream(image(3, {}));
    QList<oxdMaterial> objects;
    stream >> objects;
    QCOMPARE(ids(objects), QVector<quint64>({0}));
    QCOMPARE(stream.status(), QDataStream::ReadPastEnd);
}

void tst_oxdStreams::readingDiscardsOldContent()
{
    discardsOldContent<QList<oxdImage>>(image(2, {1, 2}), {1, 2});
    discardsOldContent<QVector<oxdImage>>(image(2, {1, 2}), {1, 2});
    discardsOldContent<QList<oxdImage>>(image(0, {}), {});
    discardsOldContent<QVector<oxdImage>>(image(0, {}), {});
}

void tst_oxdStreams::emptyImageClears()
{
    discardsOldContent<QList<oxdImage>>({}, {});
    discardsOldContent<QVector<oxdImage>>({}, {});
}

void tst_oxdStreams::listEndsWithAPartialElement()
{
    QDataStream stream(image(4, {1, 2}) + QByteArray(5, 'x'));
    QList<oxdMaterial> objects;
    stream >> objects;
    QCOMPARE(ids(objects), QVector<quint64>({1, 2, 0}));
    QCOMPARE(stream.status(), QDataStream::ReadPastEnd);
}

void tst_oxdStreams::readingGoesOnAfterABadStatus()
{
    QDataStream stream(image(2, {1, 2}) + image(2, {3, 4}));
    stream.setStatus(QDataStream::ReadCorruptData);
    QList<oxdMaterial> list;
    QVector<oxdMaterial> vector;
    stream >> list >> vector;
    QCOMPARE(ids(list), QVector<quint64>({1, 2}));
    QCOMPARE(ids(vector), QVector<quint64>({3, 4}));
    QCOMPARE(stream.status(), QDataStream::ReadCorruptData);
}

void tst_oxdStreams::readingLeavesWhatFollows()
{
    QDataStream stream(image(1, {1, 2, 3}));
    QList<oxdMaterial> objects;
    quint64 next = 0;
    stream >> objects >> next;
    QCOMPARE(ids(objects), QVector<quint64>({1}));
    QCOMPARE(next, Q_UINT64_C(2));
}

void tst_oxdStreams::readsFromSequentialDevice()
{
    Pipe pipe(image(2, {1, 2}) + image(2, {3, 4}) + image(3, {5, 6}));
    QDataStream stream(&pipe);
    QList<oxdMaterial> list;
    QVector<oxdMaterial> vector;
    QList<oxdMaterial> shortList;
    stream >> list >> vector >> shortList;
    QCOMPARE(ids(list), QVector<quint64>({1, 2}));
    QCOMPARE(ids(vector), QVector<quint64>({3, 4}));
    QCOMPARE(ids(shortList), QVector<quint64>({5, 6}));
}

void tst_oxdStreams::readsInsideTransaction()
{
    QDataStream stream(image(3, {1, 2}));
    QList<oxdMaterial> list;
    QVector<oxdMaterial> vector;
    stream.startTransaction();
    stream >> list >> vector;
    QVERIFY(!stream.commitTransaction());
    QCOMPARE(ids(list), QVector<quint64>({1, 2}));
    QVERIFY(vector.isEmpty());
}

void tst_oxdStreams::withoutDeviceListAndVectorAreEmpty()
{
    QDataStream stream;
    QList<oxdMaterial> list = containerOf<QList<oxdMaterial>>({1});
    QVector<oxdMaterial> vector = containerOf<QVector<oxdMaterial>>({1});
    stream >> list >> vector;
    QVERIFY(list.isEmpty());
    QVERIFY(vector.isEmpty());
}

void tst_oxdStreams::hostileCountOfListCostsNothing()
{
    for (quint32 count : {0xffffffffu, 0x80000000u, 0x7fffffffu}) {
        QDataStream stream(image(count, {1, 2}));
        QList<oxdMaterial> objects;
        stream >> objects;
        QCOMPARE(ids(objects), QVector<quint64>({1, 2}));
    }
}

void tst_oxdStreams::hostileCountOfVectorGivesEmptyVector()
{
    for (quint32 count : {0xffffffffu, 0x80000000u}) {
        QDataStream stream(image(count, {1, 2}));
        QVector<oxdMaterial> objects = containerOf<QVector<oxdMaterial>>({1});
        stream >> objects;
        QVERIFY(objects.isEmpty());
        QCOMPARE(stream.status(), QDataStream::ReadCorruptData);
    }
}

void tst_oxdStreams::vectorThatMemoryDoesNotHoldIsEmpty_data()
{
    QTest::addColumn<quint32>("count");
    QTest::newRow("no room for the elements") << quint32(0x7fffffff);
    QTest::newRow("room for a part of the elements") << quint32(1'000'000);
}

void tst_oxdStreams::vectorThatMemoryDoesNotHoldIsEmpty()
{
    if (!MemoryLimit::isPossible())
        QSKIP("the sanitizer's own use of memory does not fit below a limit");
    QFETCH(quint32, count);
    QDataStream stream(image(count, {1, 2}));
    QVector<oxdMaterial> objects = containerOf<QVector<oxdMaterial>>({1});
    const qint64 before = bytesInUse();
    {
        // A million places take 40 MB, and what QObject keeps of each element three times that.
        const MemoryLimit limit(100 << 20);
        stream >> objects;
    }
    QVERIFY(objects.isEmpty());
    QCOMPARE(stream.status(), QDataStream::ReadCorruptData);
    // Neither elements nor the room for them are left.
    const qint64 grown = bytesInUse() - before;
    QVERIFY2(grown < (1 << 20), QByteArray::number(grown));
}

QTEST_GUILESS_MAIN(tst_oxdStreams)

#include "tst_oxdStreams.moc"
