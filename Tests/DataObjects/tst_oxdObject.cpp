#include <QDataStream>
#include <QTest>

#include <memory>
#include <type_traits>

#include "ExpectedTypes.h"
#include "oxdDataObjects.h"

namespace {

QVector<quint64> initialized;

// A virtual base cannot be left by a static_cast.
template<class T, class Base, class = void>
constexpr bool derivesVirtually = std::is_base_of_v<Base, T>;
template<class T, class Base>
constexpr bool derivesVirtually<T, Base, std::void_t<decltype(static_cast<T *>(std::declval<Base *>()))>> = false;

struct DataObjectClass
{
    const char *name;
    int levels;
    const QMetaObject *metaObject;
    size_t size;
    std::unique_ptr<oxdObject> (*create)(quint64 id);
    std::unique_ptr<oxdObject> (*createDefault)();
    std::unique_ptr<oxdObject> (*copy)(const oxdObject &object);
    void (*assign)(oxdObject &target, const oxdObject &object);
    bool (*isReachedFrom)(QObject *object);
};

template<class T>
DataObjectClass describe(const char *name, int levels)
{
    static_assert(derivesVirtually<T, oxDecouplingDispatcher>);
    static_assert(std::is_same_v<T, oxdObject> || derivesVirtually<T, oxdObject>);
    static_assert(!std::is_convertible_v<quint64, T>);
    return {
        name,
        levels,
        &T::staticMetaObject,
        sizeof(T),
        [](quint64 id) -> std::unique_ptr<oxdObject> {
            if constexpr (std::is_same_v<T, oxdObject>) {
                auto object = std::make_unique<oxdObject>();
                object->initialize(id);
                return object;
            } else {
                return std::make_unique<T>(id);
            }
        },
        []() -> std::unique_ptr<oxdObject> { return std::make_unique<T>(); },
        [](const oxdObject &object) -> std::unique_ptr<oxdObject> {
            return std::make_unique<T>(dynamic_cast<const T &>(object));
        },
        [](oxdObject &target, const oxdObject &object) { dynamic_cast<T &>(target) = dynamic_cast<const T &>(object); },
        [](QObject *object) { return dynamic_cast<T *>(object) != nullptr; }};
}

const QVector<DataObjectClass> &classes()
{
#define DESCRIBE(Class, Levels, Container, Python) describe<Class>(#Class, Levels),
    static const QVector<DataObjectClass> all{OXD_CLASSES(DESCRIBE)};
    return all;
}

const DataObjectClass &currentClass()
{
    QFETCH_GLOBAL(int, row);
    return classes().at(row);
}

} // namespace

// The test executable's definition comes before the library's, also for the library's own calls.
void oxdObject::initialize(unsigned long long id)
{
    initialized.append(id);
    m_objectId = id;
}

/// Every test runs for every class of the catalogue.
class tst_oxdObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data();
    void init();

    void isTheExpectedClass();
    void constructorInitializesOncePerLevel();
    void defaultConstructorRefersToNoObject();
    void copySharesTheHandle();
    void assignmentReplacesTheHandle();
    void addsNoState();
    void isReachedFromQObject();
    void streamsAsItsId();
    void readingWithoutDataGivesNoObject();
};

void tst_oxdObject::initTestCase_data()
{
    QTest::addColumn<int>("row");
    for (int row = 0; row < classes().size(); ++row)
        QTest::newRow(classes().at(row).name) << row;
}

void tst_oxdObject::init()
{
    initialized.clear();
}

void tst_oxdObject::isTheExpectedClass()
{
    QCOMPARE(classes().size(), int(std::size(expectedTypes)));
    QFETCH_GLOBAL(int, row);
    const ExpectedType &expected = expectedTypes[row];
    QCOMPARE(currentClass().name, expected.name);
    QCOMPARE(currentClass().levels, expected.levels);
    QCOMPARE(currentClass().metaObject->className(), expected.name);
    QCOMPARE(currentClass().create(1)->metaObject(), currentClass().metaObject);
}

void tst_oxdObject::constructorInitializesOncePerLevel()
{
    const auto object = currentClass().create(0x123456789abcdef0);
    QCOMPARE(object->objectId(), Q_UINT64_C(0x123456789abcdef0));
    QVector<quint64> expected(qMax(currentClass().levels, 1), 0);
    expected.last() = 0x123456789abcdef0;
    QCOMPARE(initialized, expected);
}

void tst_oxdObject::defaultConstructorRefersToNoObject()
{
    QCOMPARE(currentClass().createDefault()->objectId(), Q_UINT64_C(0));
    QCOMPARE(initialized, QVector<quint64>(currentClass().levels, 0));
}

void tst_oxdObject::copySharesTheHandle()
{
    const auto object = currentClass().create(7);
    object->setObjectName(QStringLiteral("original"));
    initialized.clear();
    const auto copy = currentClass().copy(*object);
    QCOMPARE(copy->objectId(), Q_UINT64_C(7));
    QCOMPARE(copy->metaObject(), currentClass().metaObject);
    QVERIFY(copy->objectName().isEmpty());
    QVERIFY(initialized.isEmpty());

    object->initialize(8);
    QCOMPARE(copy->objectId(), Q_UINT64_C(7));
}

void tst_oxdObject::assignmentReplacesTheHandle()
{
    const auto object = currentClass().create(7);
    const auto target = currentClass().create(8);
    currentClass().assign(*target, *object);
    QCOMPARE(target->objectId(), Q_UINT64_C(7));
}

void tst_oxdObject::addsNoState()
{
    QCOMPARE(currentClass().size, sizeof(oxdBaseObject));
}

void tst_oxdObject::isReachedFromQObject()
{
    const auto object = currentClass().create(7);
    QVERIFY(currentClass().isReachedFrom(object.get()));

    const bool isOther = qstrcmp(currentClass().name, "oxdObject") != 0;
    oxdObject root;
    QCOMPARE(currentClass().isReachedFrom(&root), !isOther);
    QVERIFY(!currentClass().isReachedFrom(this));
}

void tst_oxdObject::streamsAsItsId()
{
    for (const auto &[order, bytes] : {std::pair(QDataStream::BigEndian, "0102030405060708"),
                                       std::pair(QDataStream::LittleEndian, "0807060504030201")}) {
        QByteArray data;
        QDataStream output(&data, QIODevice::WriteOnly);
        output.setByteOrder(order);
        output << *currentClass().create(0x0102030405060708);
        QCOMPARE(data.toHex(), QByteArray(bytes));

        QDataStream input(data);
        input.setByteOrder(order);
        const auto object = currentClass().createDefault();
        input >> *object;
        QCOMPARE(object->objectId(), Q_UINT64_C(0x0102030405060708));
        QVERIFY(input.atEnd());
    }
}

void tst_oxdObject::readingWithoutDataGivesNoObject()
{
    QDataStream input(QByteArray(7, 'x'));
    const auto object = currentClass().create(7);
    input >> *object;
    QCOMPARE(object->objectId(), Q_UINT64_C(0));
    QCOMPARE(input.status(), QDataStream::ReadPastEnd);
}

QTEST_GUILESS_MAIN(tst_oxdObject)

#include "tst_oxdObject.moc"
