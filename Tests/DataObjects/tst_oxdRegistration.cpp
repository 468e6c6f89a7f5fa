#include <QDataStream>
#include <QSequentialIterable>
#include <QTest>

#include "ExpectedTypes.h"
#include "oxKernelInterfaceRemote.h"
#include "oxQRPCClient.h"
#include "oxdObject.h"
#include "oxdObjectManager.h"
#include "oxdWebEngine.h"

namespace {

struct ExternalTypeCall
{
    quint64 kernelType;
    quint64 externalType;
};
QVector<ExternalTypeCall> externalTypeCalls;

/// A class that the kernel does not enter into its table: its meta-object has no address.
struct Refused : oxdObject
{
    struct NoMetaObject
    {
        const QMetaObject *operator&() const { return nullptr; }
    };
    static constexpr NoMetaObject staticMetaObject{};
};

QByteArray listName(const char *className)
{
    return QByteArray("QList<") + className + '>';
}

QByteArray vectorName(const char *className)
{
    return QByteArray("QVector<") + className + '>';
}

/// A value of a type that is known by its name alone.
class Value
{
public:
    explicit Value(int type)
        : m_type(type)
        , m_data(QMetaType::create(type))
    {}
    Value(const Value &other)
        : m_type(other.m_type)
        , m_data(QMetaType::create(m_type, other.m_data))
    {}
    ~Value() { QMetaType::destroy(m_type, m_data); }
    Value &operator=(const Value &) = delete;

    template<class T>
    const T &as() const
    {
        return *static_cast<const T *>(m_data);
    }

    bool load(const QByteArray &image, QDataStream::ByteOrder order = QDataStream::BigEndian)
    {
        QDataStream stream(image);
        stream.setByteOrder(order);
        return QMetaType::load(stream, m_type, m_data);
    }

    QByteArray saved(QDataStream::ByteOrder order = QDataStream::BigEndian) const
    {
        QByteArray image;
        QDataStream stream(&image, QIODevice::WriteOnly);
        stream.setByteOrder(order);
        return QMetaType::save(stream, m_type, m_data) ? image : QByteArray("no operator");
    }

    QVariant variant() const { return QVariant(m_type, m_data); }

private:
    int m_type;
    void *m_data;
};

QByteArray streamed(const QVariant &variant)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream << variant;
    return data;
}

QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

} // namespace
Q_DECLARE_METATYPE(Refused)

// Stands in for the kernel's own: the test executable's definition comes before the library's.
void oxdObjectManager::registerExternalType(unsigned long long kernelType, unsigned long long externalType)
{
    externalTypeCalls.append({kernelType, externalType});
}

/// What a fresh process knows after init, for every row of the catalogue.
class tst_oxdRegistration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void idsFollowTheCatalogue();
    void kernelKnowsTheClassesInOrder();
    void externalTypeIsAlwaysNone();
    void externalTypeOfARefusedClassIsHandedOver();

    void classIsMetaType_data();
    void classIsMetaType();
    void containersAreMetaTypes_data();
    void containersAreMetaTypes();
    void streamsThroughTheMetaType_data();
    void streamsThroughTheMetaType();
    void metaTypeUsesTheReadersOfDataObjects_data();
    void metaTypeUsesTheReadersOfDataObjects();
    void travelsInVariants_data();
    void travelsInVariants();
    void containersAreIterable_data();
    void containersAreIterable();

    void enumerationIsMetaType();
    void enumerationStreamsAsSignedInteger();
};

namespace {

void addRows()
{
    QTest::addColumn<QByteArray>("name");
    for (const ExpectedType &type : expectedTypes)
        QTest::newRow(type.name) << QByteArray(type.name);
}

} // namespace

void tst_oxdRegistration::initTestCase()
{
    for (const ExpectedType &type : expectedTypes) {
        QCOMPARE(QMetaType::type(type.name), 0);
        QCOMPARE(QMetaType::type(listName(type.name)), 0);
        QCOMPARE(QMetaType::type(vectorName(type.name)), 0);
    }
    QCOMPARE(QMetaType::type(enumerationName), 0);

    static oxQRPCClient client;
    oxKernelInterface::the()->init(&client, true);
}

void tst_oxdRegistration::idsFollowTheCatalogue()
{
    int previous = QMetaType::User - 1;
    const auto checkNext = [&previous](const QByteArray &name) {
        const int id = QMetaType::type(name);
        QVERIFY2(id > previous, name);
        previous = id;
    };
    for (const ExpectedType &type : expectedTypes) {
        checkNext(type.name);
        checkNext(vectorName(type.name));
        checkNext(listName(type.name));
        if (qstrcmp(type.name, classBeforeEnumeration) == 0)
            checkNext(enumerationName);
    }
}

void tst_oxdRegistration::kernelKnowsTheClassesInOrder()
{
    const QVector<quint64> types = oxdObjectManager::kernelTypes();
    QCOMPARE(types.size(), int(std::size(expectedTypes)));
    for (int i = 0; i < types.size(); ++i)
        QCOMPARE(oxdObjectManager::metaObject(types.at(i))->className(), expectedTypes[i].name);
}

void tst_oxdRegistration::externalTypeIsAlwaysNone()
{
    const QVector<quint64> types = oxdObjectManager::kernelTypes();
    QCOMPARE(externalTypeCalls.size(), types.size());
    for (int i = 0; i < types.size(); ++i) {
        QCOMPARE(externalTypeCalls.at(i).kernelType, types.at(i));
        QCOMPARE(externalTypeCalls.at(i).externalType, Q_UINT64_C(0));
    }
}

void tst_oxdRegistration::externalTypeOfARefusedClassIsHandedOver()
{
    oxdObjectManager::registerType<Refused>(9);
    const ExternalTypeCall call = externalTypeCalls.takeLast();
    QCOMPARE(call.kernelType, Q_UINT64_C(0));
    QCOMPARE(call.externalType, Q_UINT64_C(9));
}

void tst_oxdRegistration::classIsMetaType_data()
{
    addRows();
}

void tst_oxdRegistration::classIsMetaType()
{
    QFETCH(QByteArray, name);
    const int type = QMetaType::type(name);
    QCOMPARE(QMetaType::typeName(type), name.constData());
    QCOMPARE(int(QMetaType::typeFlags(type)), 0x103);
    QCOMPARE(QMetaType::sizeOf(type), int(sizeof(oxdObject)));

    // An element built from nothing refers to no object, one built from another to the same.
    Value none(type);
    QCOMPARE(none.saved(), hex("0000000000000000"));
    QVERIFY(none.load(hex("0000000000000007")));
    QCOMPARE(Value(none).saved(), hex("0000000000000007"));
}

void tst_oxdRegistration::containersAreMetaTypes_data()
{
    addRows();
}

void tst_oxdRegistration::containersAreMetaTypes()
{
    QFETCH(QByteArray, name);
    for (const QByteArray &container : {listName(name), vectorName(name)}) {
        const int type = QMetaType::type(container);
        QCOMPARE(QMetaType::typeName(type), container.constData());
        QCOMPARE(int(QMetaType::typeFlags(type)), 0x107);
        QCOMPARE(QMetaType::sizeOf(type), int(sizeof(void *)));
        QCOMPARE(Value(type).saved(), hex("00000000"));
    }
}

void tst_oxdRegistration::streamsThroughTheMetaType_data()
{
    addRows();
}

void tst_oxdRegistration::streamsThroughTheMetaType()
{
    QFETCH(QByteArray, name);
    const QVector<QPair<QByteArray, QByteArray>> images{{name, hex("0102030405060708")},
                                                        {listName(name),
                                                         hex("00000002"
                                                             "0102030405060708"
                                                             "0000000000000000")},
                                                        {vectorName(name),
                                                         hex("00000002"
                                                             "0102030405060708"
                                                             "0000000000000000")}};
    const QVector<QByteArray> littleEndianImages{hex("0807060504030201"),
                                                 hex("02000000"
                                                     "0807060504030201"
                                                     "0000000000000000"),
                                                 hex("02000000"
                                                     "0807060504030201"
                                                     "0000000000000000")};
    for (int i = 0; i < images.size(); ++i) {
        Value value(QMetaType::type(images.at(i).first));
        QVERIFY(value.load(images.at(i).second));
        QCOMPARE(value.saved(), images.at(i).second);
        QCOMPARE(value.saved(QDataStream::LittleEndian), littleEndianImages.at(i));
        QVERIFY(value.load(littleEndianImages.at(i), QDataStream::LittleEndian));
        QCOMPARE(value.saved(), images.at(i).second);
    }
}

void tst_oxdRegistration::metaTypeUsesTheReadersOfDataObjects_data()
{
    addRows();
}

void tst_oxdRegistration::metaTypeUsesTheReadersOfDataObjects()
{
    QFETCH(QByteArray, name);
    const QByteArray announcesThreeHoldsTwo = hex("00000003"
                                                  "0000000000000001"
                                                  "0000000000000002");
    Value list(QMetaType::type(listName(name)));
    QVERIFY(list.load(announcesThreeHoldsTwo));
    QCOMPARE(list.saved(),
             hex("00000002"
                 "0000000000000001"
                 "0000000000000002"));
    Value vector(QMetaType::type(vectorName(name)));
    QVERIFY(vector.load(announcesThreeHoldsTwo));
    QCOMPARE(vector.saved(),
             hex("00000003"
                 "0000000000000001"
                 "0000000000000002"
                 "0000000000000000"));
}

void tst_oxdRegistration::travelsInVariants_data()
{
    addRows();
}

void tst_oxdRegistration::travelsInVariants()
{
    QFETCH(QByteArray, name);
    const QByteArray elements = hex("00000002"
                                    "0000000000000001"
                                    "0000000000000002");
    for (const auto &[typeName, image] :
         {std::pair(name, hex("0000000000000001")), {listName(name), elements}, {vectorName(name), elements}}) {
        Value value(QMetaType::type(typeName));
        QVERIFY(value.load(image));

        const QByteArray data = streamed(value.variant());
        QVERIFY(data.endsWith(image));
        QVariant read;
        QDataStream input(data);
        input >> read;
        QCOMPARE(read.typeName(), typeName.constData());
        QCOMPARE(streamed(read), data);
    }
}

void tst_oxdRegistration::containersAreIterable_data()
{
    addRows();
}

void tst_oxdRegistration::containersAreIterable()
{
    QFETCH(QByteArray, name);
    const auto savedElement = [](const QVariant &element) {
        QByteArray image;
        QDataStream stream(&image, QIODevice::WriteOnly);
        QMetaType::save(stream, element.userType(), element.constData());
        return image;
    };
    for (const QByteArray &container : {listName(name), vectorName(name)}) {
        Value value(QMetaType::type(container));
        QVERIFY(value.load(hex("00000002"
                               "0000000000000001"
                               "0000000000000002")));
        const QVariant variant = value.variant();
        QVERIFY(variant.canConvert<QVariantList>());
        const auto iterable = variant.value<QSequentialIterable>();
        QCOMPARE(iterable.size(), 2);
        QCOMPARE(iterable.at(1).typeName(), name.constData());
        QCOMPARE(savedElement(iterable.at(1)), hex("0000000000000002"));
        QList<QByteArray> elements;
        for (const QVariant &element : iterable)
            elements.append(savedElement(element));
        QCOMPARE(elements, QList<QByteArray>({hex("0000000000000001"), hex("0000000000000002")}));
        QCOMPARE(savedElement(*(iterable.begin() + 1)), hex("0000000000000002"));
    }
}

void tst_oxdRegistration::enumerationIsMetaType()
{
    const int type = QMetaType::type(enumerationName);
    QCOMPARE(QMetaType::typeName(type), enumerationName);
    QCOMPARE(type, qMetaTypeId<oxdWebEngine::TextureSlotType>());
    QCOMPARE(int(QMetaType::typeFlags(type)), 0x117);
    QCOMPARE(QMetaType::sizeOf(type), 4);
    QVERIFY(oxdWebEngine::staticMetaObject.indexOfEnumerator("TextureSlotType") >= 0);
}

void tst_oxdRegistration::enumerationStreamsAsSignedInteger()
{
    Value value(QMetaType::type(enumerationName));
    QVERIFY(value.load(hex("00000003")));
    QCOMPARE(value.as<oxdWebEngine::TextureSlotType>(), oxdWebEngine::TransparencyTexture);
    QCOMPARE(value.saved(), hex("00000003"));
    QCOMPARE(value.saved(QDataStream::LittleEndian), hex("03000000"));
    QVERIFY(value.load(hex("ffffffff")));
    QCOMPARE(qint32(value.as<oxdWebEngine::TextureSlotType>()), -1);
    QCOMPARE(value.saved(), hex("ffffffff"));
}

QTEST_MAIN(tst_oxdRegistration)

#include "tst_oxdRegistration.moc"
