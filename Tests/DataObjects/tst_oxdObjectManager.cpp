#include <QDataStream>
#include <QTest>

#include "oxdDataObjects.h"
#include "oxdObjectManager.h"

namespace {

template<class T>
QByteArray saved(const T &value)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    QMetaType::save(stream, qMetaTypeId<T>(), &value);
    return data;
}

template<class T>
void loseStreamOperators()
{
    QMetaType::registerStreamOperators(
        qMetaTypeId<T>(), [](QDataStream &, const void *) {}, [](QDataStream &, void *) {});
    QVERIFY(saved(T()).isEmpty());
}

} // namespace

/// The first tests need meta-types that nobody has registered yet: the process does not run init.
class tst_oxdObjectManager : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void literalContainerNameIsRegisteredWithoutItsElement();
    void builtContainerNameRegistersItsElementFirst();
    void typeIdIsPositiveAndStaysTheSame();
    void typesAreListedInOrderOfRegistration();
    void nullIsNoType();
    void externalTypeIsRecorded();
    void externalTypeOfUnknownTypeIsIgnored();
    void registrationHandsOutElementThenVectorThenList();
    void secondRegistrationKeepsTheIds();
    void secondRegistrationRestoresStreamOperators();
    void secondRegistrationRecordsTheExternalTypeAgain();
};

void tst_oxdObjectManager::literalContainerNameIsRegisteredWithoutItsElement()
{
    const auto checkLiteral = [](int (*container)(), const char *name, const char *element) {
        QCOMPARE(QMetaType::type(element), 0);
        QCOMPARE(QMetaType::typeName(container()), name);
        QCOMPARE(QMetaType::type(element), 0);
    };
    checkLiteral(qMetaTypeId<QList<oxdMaterial>>, "QList<oxdMaterial>", "oxdMaterial");
    checkLiteral(qMetaTypeId<QList<oxdActionGraph>>, "QList<oxdActionGraph>", "oxdActionGraph");
    checkLiteral(qMetaTypeId<QList<oxdActionContainer>>, "QList<oxdActionContainer>", "oxdActionContainer");
    checkLiteral(qMetaTypeId<QList<oxdActionSlot>>, "QList<oxdActionSlot>", "oxdActionSlot");
    checkLiteral(qMetaTypeId<QVector<oxdNode>>, "QVector<oxdNode>", "oxdNode");
}

void tst_oxdObjectManager::builtContainerNameRegistersItsElementFirst()
{
    QCOMPARE(QMetaType::type("oxdTimer"), 0);
    const int list = qMetaTypeId<QList<oxdTimer>>();
    QCOMPARE(QMetaType::typeName(list), "QList<oxdTimer>");
    QVERIFY(QMetaType::type("oxdTimer") > 0);
    QVERIFY(QMetaType::type("oxdTimer") < list);
}

void tst_oxdObjectManager::typeIdIsPositiveAndStaysTheSame()
{
    const quint64 type = oxdObjectManager::registerType(&oxdObject::staticMetaObject);
    QVERIFY(type > 0);
    QCOMPARE(oxdObjectManager::registerType(&oxdObject::staticMetaObject), type);
    QCOMPARE(oxdObjectManager::metaObject(type), &oxdObject::staticMetaObject);
    QVERIFY(oxdObjectManager::registerType(&tst_oxdObjectManager::staticMetaObject) != type);
}

void tst_oxdObjectManager::typesAreListedInOrderOfRegistration()
{
    const quint64 image = oxdObjectManager::registerType(&oxdImage::staticMetaObject);
    const quint64 slot = oxdObjectManager::registerType(&oxdActionSlot::staticMetaObject);
    oxdObjectManager::registerType(&oxdImage::staticMetaObject);
    const QVector<quint64> types = oxdObjectManager::kernelTypes();
    QCOMPARE(types.mid(types.size() - 2), QVector<quint64>({image, slot}));
}

void tst_oxdObjectManager::nullIsNoType()
{
    const int count = oxdObjectManager::kernelTypes().size();
    QCOMPARE(oxdObjectManager::registerType(static_cast<const QMetaObject *>(nullptr)), Q_UINT64_C(0));
    QCOMPARE(oxdObjectManager::kernelTypes().size(), count);
    QCOMPARE(oxdObjectManager::metaObject(0), static_cast<const QMetaObject *>(nullptr));
}

void tst_oxdObjectManager::externalTypeIsRecorded()
{
    const quint64 type = oxdObjectManager::registerType(&oxdObject::staticMetaObject);
    QCOMPARE(oxdObjectManager::externalType(type), Q_UINT64_C(0));
    oxdObjectManager::registerExternalType(type, 42);
    QCOMPARE(oxdObjectManager::externalType(type), Q_UINT64_C(42));
    oxdObjectManager::registerType(&oxdObject::staticMetaObject);
    QCOMPARE(oxdObjectManager::externalType(type), Q_UINT64_C(42));
    oxdObjectManager::registerExternalType(type, 0);
    QCOMPARE(oxdObjectManager::externalType(type), Q_UINT64_C(0));
}

void tst_oxdObjectManager::externalTypeOfUnknownTypeIsIgnored()
{
    const QVector<quint64> types = oxdObjectManager::kernelTypes();
    for (quint64 type : {Q_UINT64_C(0), types.last() + 1, ~Q_UINT64_C(0)}) {
        oxdObjectManager::registerExternalType(type, 42);
        QCOMPARE(oxdObjectManager::externalType(type), Q_UINT64_C(0));
        QCOMPARE(oxdObjectManager::metaObject(type), static_cast<const QMetaObject *>(nullptr));
    }
    QCOMPARE(oxdObjectManager::kernelTypes(), types);
}

void tst_oxdObjectManager::registrationHandsOutElementThenVectorThenList()
{
    oxdObjectManager::registerType<oxdGlassMaterial>(0);
    const int type = QMetaType::type("oxdGlassMaterial");
    QVERIFY(type > 0);
    QVERIFY(QMetaType::type("QVector<oxdGlassMaterial>") > type);
    QVERIFY(QMetaType::type("QList<oxdGlassMaterial>") > QMetaType::type("QVector<oxdGlassMaterial>"));
}

void tst_oxdObjectManager::secondRegistrationKeepsTheIds()
{
    oxdObjectManager::registerType<oxdImage>(0);
    const int ids[] = {QMetaType::type("oxdImage"), QMetaType::type("QVector<oxdImage>"),
                       QMetaType::type("QList<oxdImage>")};
    const QVector<quint64> kernelTypes = oxdObjectManager::kernelTypes();

    oxdObjectManager::registerType<oxdImage>(0);
    QCOMPARE(QMetaType::type("oxdImage"), ids[0]);
    QCOMPARE(QMetaType::type("QVector<oxdImage>"), ids[1]);
    QCOMPARE(QMetaType::type("QList<oxdImage>"), ids[2]);
    QCOMPARE(oxdObjectManager::kernelTypes(), kernelTypes);
}

void tst_oxdObjectManager::secondRegistrationRestoresStreamOperators()
{
    oxdObjectManager::registerType<oxdImage>(0);
    loseStreamOperators<oxdImage>();
    loseStreamOperators<QList<oxdImage>>();
    loseStreamOperators<QVector<oxdImage>>();

    oxdObjectManager::registerType<oxdImage>(0);
    QCOMPARE(saved(oxdImage(1)).toHex(), QByteArray("0000000000000001"));
    QCOMPARE(saved(QList<oxdImage>{oxdImage(1)}).toHex(), QByteArray("000000010000000000000001"));
    QCOMPARE(saved(QVector<oxdImage>{oxdImage(1)}).toHex(), QByteArray("000000010000000000000001"));
}

void tst_oxdObjectManager::secondRegistrationRecordsTheExternalTypeAgain()
{
    oxdObjectManager::registerType<oxdImage>(5);
    const quint64 type = oxdObjectManager::registerType(&oxdImage::staticMetaObject);
    QCOMPARE(oxdObjectManager::externalType(type), Q_UINT64_C(5));
    oxdObjectManager::registerType<oxdImage>(0);
    QCOMPARE(oxdObjectManager::externalType(type), Q_UINT64_C(0));
}

QTEST_GUILESS_MAIN(tst_oxdObjectManager)

#include "tst_oxdObjectManager.moc"
