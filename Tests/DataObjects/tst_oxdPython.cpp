#include "oxdObjectManagerPython.h"

#include <QPointer>
#include <QTest>

#include "Exchanger.h"
#include "ExpectedTypes.h"
#include "InterpreterLock.h"
#include "MemoryLimit.h"
#include "oxKernelInterfaceRemote.h"
#include "oxQRPCClient.h"

namespace {

using Ids = QVector<quint64>;

void addClassRows()
{
    QTest::addColumn<QString>("name");
    for (const ExpectedType &type : expectedTypes) {
        if (type.inPython)
            QTest::newRow(type.name) << QString::fromUtf8(type.name);
    }
}

template<class T>
QList<T> objects(const Ids &ids)
{
    QList<T> list;
    for (quint64 id : ids) {
        list.append(T());
        list.last().initialize(id);
    }
    return list;
}

template<class T>
Ids ids(const QList<T> &list)
{
    Ids result;
    for (const T &object : list)
        result.append(object.objectId());
    return result;
}

} // namespace

/// A data object with a slot for scripts: its base is not virtual, as moc calls no slot across one
/// that is.
class Decorated : public oxdObject
{
    Q_OBJECT

public:
    Decorated() { ++count; }
    Decorated(const Decorated &other)
        : oxdObject(other)
    {
        ++count;
    }
    ~Decorated() override { --count; }
    Decorated &operator=(const Decorated &) = default;

    static int count; ///< of those that live

public Q_SLOTS:
    QStringList decorate(Decorated *object) const
    {
        return {QString::number(objectId()), QString::number(object->objectId())};
    }
};
int Decorated::count = 0;
Q_DECLARE_METATYPE(Decorated)

/// What a host might derive, with a state of its own: where its handle lies is its own matter, too.
class HostMaterial : public oxdMaterial
{
    Q_OBJECT

public:
    using oxdMaterial::oxdMaterial;

    QByteArray state[4];
};

/// A host's operations on data objects, which scripts call as the objects' own.
class HostDecorators : public QObject
{
    Q_OBJECT

public Q_SLOTS:
    QString number(oxdMaterial *object, const oxdMaterial &other) const
    {
        return QString::number(object->objectId()) + '-' + QString::number(other.objectId());
    }
};

/// What a host's slot takes that knows classes that Python does not know.
class HostExchanger : public QObject
{
    Q_OBJECT

public:
    QString taken;

public Q_SLOTS:
    void takeHostMaterial(HostMaterial *object) { taken = object ? QStringLiteral("host") : QStringLiteral("null"); }
};

/// Lists of data objects between C++ and real scripts, in a process that has run init.
class tst_oxdPython : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void packageHoldsTheClassesAndNothingElse();
    void registeringAgainChangesNothing();
    void oneObjectOfTheClassIsItsDecorator();

    void listGivesCopiesOfItsClass_data();
    void listGivesCopiesOfItsClass();
    void listPassesBothWays_data();
    void listPassesBothWays();
    void wrongItemsBecomeEmptyObjects_data();
    void wrongItemsBecomeEmptyObjects();

    void nodeListsAreNotConvertible();
    void listInVariantIsAPythonList();
    void pythonListInVariantHoldsTheObjects();
    void vectorIsNotConvertible();
    void singleObjectIsWrappedAsCopy();
    void derivedObjectsKeepTheirHandleInAListOfTheBase();
    void objectsOutliveTheirList();
    void wrapperOfADeletedObjectGivesAnEmptyObject();

    void singleObjectIsTaken_data();
    void singleObjectIsTaken();
    void wrongSingleObjectIsRefused_data();
    void wrongSingleObjectIsRefused();
    void referenceIsTheObjectItself();
    void pointerKeepsItsClass();
    void deletedSingleObjectIsNull();
    void overloadsAreToldApart();
    void propertyTakesTheObject();
    void signalGivesTheObject();
    void decoratorsOfTheHostGetTheObject();
    void objectOfAClassWithStateIsTaken();
    void classThatPythonDoesNotKnowIsRefused();
    void listOfPointersGivesCopies_data();
    void listOfPointersGivesCopies();
    void listOfPointersIsTaken_data();
    void listOfPointersIsTaken();
    void pointerGivesACopy_data();
    void pointerGivesACopy();

    void convertedElementsAreAppended();
    void emptySequenceLeavesTheListAlone();
    void nonSequenceIsRejected_data();
    void nonSequenceIsRejected();
    void unusualSequences_data();
    void unusualSequences();
    void longSequencesAreTaken_data();
    void longSequencesAreTaken();
    void longClaimEndsAtTheFirstItemThatIsMissing_data();
    void longClaimEndsAtTheFirstItemThatIsMissing();
    void moreThanMemoryHoldsIsRefused_data();
    void moreThanMemoryHoldsIsRefused();
    void whatFailsForMemoryLeavesTheListAlone();
    void itemsKeepTheirReferences_data();
    void itemsKeepTheirReferences();

    void singleWrapperOwnsItsCopy();
    void emptyListGivesAnEmptyPythonList();
    void everyWrapperHasOneReferenceTooMany();
    void decoratorsAreNotPythonQtsToDelete();

private:
    // All of these leave no Python error behind, or fail.
    void run(const char *statements);
    QVariant evaluate(const QString &expression);
    PyObject *object(const char *expression);
    template<class T>
    bool convert(PyObject *sequence, QList<T> *list);

    Exchanger m_exchanger;
};

void tst_oxdPython::initTestCase()
{
    static oxQRPCClient client;
    oxKernelInterface::the()->init(&client, true);
    const InterpreterLock lock;
    oxKernelInterface::the()->getPythonEngine()->addObject(QStringLiteral("exchanger"), &m_exchanger);
    run("import sys, gc\n"
        "from PythonQt import oxKernelServices\n"
        "def outcome(function, *arguments):\n"
        "    try:\n"
        "        return function(*arguments)\n"
        "    except Exception as error:\n"
        "        return type(error).__name__\n");
}

void tst_oxdPython::cleanup()
{
    const InterpreterLock lock;
    QVERIFY(!PyErr_Occurred());
}

void tst_oxdPython::run(const char *statements)
{
    const InterpreterLock lock;
    oxKernelInterface::the()->getPythonEngine()->evalScript(QString::fromUtf8(statements), Py_file_input);
    QVERIFY(!PythonQt::self()->hadError());
}

QVariant tst_oxdPython::evaluate(const QString &expression)
{
    const InterpreterLock lock;
    const QVariant value = oxKernelInterface::the()->getPythonEngine()->evalScript(expression, Py_eval_input);
    return PythonQt::self()->hadError() ? QVariant(QStringLiteral("an error")) : value;
}

// A borrowed reference: it stays in the module's variable "kept".
PyObject *tst_oxdPython::object(const char *expression)
{
    run(QByteArray("kept = ") + expression);
    return PyDict_GetItemString(PyModule_GetDict(oxKernelInterface::the()->getPythonEngine()->object()), "kept");
}

template<class T>
bool tst_oxdPython::convert(PyObject *sequence, QList<T> *list)
{
    const bool converted = oxdObjectManager::convertToQListOfType<T>(sequence, list, 0, true);
    return !PyErr_Occurred() && converted;
}

void tst_oxdPython::packageHoldsTheClassesAndNothingElse()
{
    QStringList expected;
    for (const ExpectedType &type : expectedTypes) {
        if (type.inPython)
            expected.append(QString::fromUtf8(type.name));
    }
    expected.sort();
    QCOMPARE(evaluate(QStringLiteral("sorted(n for n in dir(oxKernelServices) if n.startswith('ox'))")).toStringList(),
             expected);
    QCOMPARE(evaluate(QStringLiteral("oxKernelServices.oxdMaterial.__module__")).toString(),
             QStringLiteral("PythonQt.oxKernelServices"));
}

void tst_oxdPython::registeringAgainChangesNothing()
{
    {
        const InterpreterLock lock;
        oxdObjectManager::registerToPython<oxdMaterial>();
    }
    QCOMPARE(evaluate(QStringLiteral("len(exchanger.exchange_oxdMaterial(exchanger.give_oxdMaterial()))")).toInt(), 3);
    QCOMPARE(m_exchanger.taken, Ids({1, 2, 3}));
}

void tst_oxdPython::oneObjectOfTheClassIsItsDecorator()
{
    const InterpreterLock lock;
    oxdObjectManager::registerToPython<Decorated>();
    oxdObjectManager::registerToPython<Decorated>();
    QCOMPARE(Decorated::count, 1);

    const QList<Decorated> list = objects<Decorated>({7});
    PyObject *converted = oxdObjectManager::convertFromQListOfType<Decorated>(&list, 0);
    PyDict_SetItemString(PyModule_GetDict(oxKernelInterface::the()->getPythonEngine()->object()), "given", converted);
    Py_DECREF(converted);
    QCOMPARE(evaluate(QStringLiteral("given[0].decorate()")).toStringList(), QStringList({"0", "7"}));
}

void tst_oxdPython::listGivesCopiesOfItsClass_data()
{
    addClassRows();
}

void tst_oxdPython::listGivesCopiesOfItsClass()
{
    QFETCH(QString, name);
    QCOMPARE(evaluate(QStringLiteral("type(exchanger.give_%1()) is list").arg(name)), QVariant(true));
    QCOMPARE(evaluate(QStringLiteral("[type(o) is oxKernelServices.%1 for o in exchanger.give_%1()]").arg(name)),
             QVariant(QVariantList{true, true, true}));
    QCOMPARE(evaluate(QStringLiteral("exchanger.give_%1()[0] is exchanger.give_%1()[0]").arg(name)), QVariant(false));
    QCOMPARE(evaluate(QStringLiteral("exchanger.exchange_%1([])").arg(name)), QVariant(QVariantList()));
}

void tst_oxdPython::listPassesBothWays_data()
{
    addClassRows();
}

void tst_oxdPython::listPassesBothWays()
{
    QFETCH(QString, name);
    const QString given = QStringLiteral("exchanger.give_%1()").arg(name);
    const QString exchange = QStringLiteral("len(exchanger.exchange_%1(%2))").arg(name);

    QCOMPARE(evaluate(exchange.arg(given)).toInt(), 3);
    QCOMPARE(m_exchanger.taken, Ids({1, 2, 3}));
    QCOMPARE(evaluate(exchange.arg(QStringLiteral("tuple(reversed(%1))").arg(given))).toInt(), 3);
    QCOMPARE(m_exchanger.taken, Ids({3, 2, 1}));
    QCOMPARE(evaluate(exchange.arg(QStringLiteral("exchanger.exchange_%1(%2)[1:]").arg(name, given))).toInt(), 2);
    QCOMPARE(m_exchanger.taken, Ids({2, 3}));
    QCOMPARE(evaluate(exchange.arg(QStringLiteral("()"))).toInt(), 0);
    QCOMPARE(m_exchanger.taken, Ids());
    QCOMPARE(evaluate(QStringLiteral("outcome(exchanger.exchange_%1, 5)").arg(name)).toString(),
             QStringLiteral("ValueError"));
}

void tst_oxdPython::wrongItemsBecomeEmptyObjects_data()
{
    addClassRows();
}

void tst_oxdPython::wrongItemsBecomeEmptyObjects()
{
    QFETCH(QString, name);
    // A timer is no material, and the other way round: one of the two is wrong for every class but the roots.
    const QString other =
        name == QLatin1String("oxdTimer") ? QStringLiteral("oxdMaterial") : QStringLiteral("oxdTimer");
    const bool isBaseOfOther = name == QLatin1String("oxdObject") || name == QLatin1String("oxdBaseObject");
    const QString items = QStringLiteral("[None, 5, exchanger, oxKernelServices.%1, exchanger.give_%2()[1],"
                                         " exchanger.give_%1()[2]]")
                              .arg(name, other);
    QCOMPARE(evaluate(QStringLiteral("len(exchanger.exchange_%1(%2))").arg(name, items)).toInt(), 6);
    QCOMPARE(m_exchanger.taken, Ids({0, 0, 0, 0, isBaseOfOther ? 2u : 0u, 3}));
}

void tst_oxdPython::nodeListsAreNotConvertible()
{
    QCOMPARE(evaluate(QStringLiteral("outcome(exchanger.exchange_oxdNode, [])")).toString(),
             QStringLiteral("ValueError"));
    QCOMPARE(evaluate(QStringLiteral("type(outcome(exchanger.give_oxdNode)) is list")), QVariant(false));
}

void tst_oxdPython::listInVariantIsAPythonList()
{
    QCOMPARE(evaluate(QStringLiteral("len(exchanger.exchange_oxdMaterial(exchanger.giveListInVariant()))")).toInt(), 3);
    QCOMPARE(m_exchanger.taken, Ids({1, 2, 3}));
}

void tst_oxdPython::pythonListInVariantHoldsTheObjects()
{
    run("given = exchanger.give_oxdMaterial()\n"
        "exchanger.takeVariant(given)\n");
    const QVariantList objects = m_exchanger.takenVariant.toList();
    QCOMPARE(objects.size(), 3);
    const auto *last = dynamic_cast<oxdMaterial *>(objects.last().value<QObject *>());
    QVERIFY(last);
    QCOMPARE(last->objectId(), Q_UINT64_C(3));
}

void tst_oxdPython::vectorIsNotConvertible()
{
    QCOMPARE(evaluate(QStringLiteral("type(outcome(exchanger.giveVectorInVariant)) is list")), QVariant(false));
}

void tst_oxdPython::singleObjectIsWrappedAsCopy()
{
    for (const char *slot : {"giveObject", "giveObjectInVariant"}) {
        const QString given = QStringLiteral("exchanger.%1()").arg(QLatin1String(slot));
        QCOMPARE(evaluate(QStringLiteral("type(%1) is oxKernelServices.oxdMaterial").arg(given)), QVariant(true));
        QCOMPARE(evaluate(QStringLiteral("len(exchanger.exchange_oxdMaterial([%1]))").arg(given)).toInt(), 1);
        QCOMPARE(m_exchanger.taken, Ids({1}));
    }
}

void tst_oxdPython::derivedObjectsKeepTheirHandleInAListOfTheBase()
{
    for (const char *base : {"oxdMaterial", "oxdBaseObject", "oxdObject"}) {
        evaluate(QStringLiteral("exchanger.exchange_%1(exchanger.give_oxdGlassMaterial())").arg(QLatin1String(base)));
        QCOMPARE(m_exchanger.taken, Ids({1, 2, 3}));
    }
    evaluate(QStringLiteral("exchanger.exchange_oxdGlassMaterial(exchanger.give_oxdMaterial())"));
    QCOMPARE(m_exchanger.taken, Ids({0, 0, 0}));
}

void tst_oxdPython::objectsOutliveTheirList()
{
    run("given = exchanger.give_oxdImage()\n"
        "survivor = given[1]\n"
        "del given\n"
        "gc.collect()\n"
        "exchanger.exchange_oxdImage([survivor, survivor])\n");
    QCOMPARE(m_exchanger.taken, Ids({2, 2}));
}

void tst_oxdPython::wrapperOfADeletedObjectGivesAnEmptyObject()
{
    auto timer = std::make_unique<oxdTimer>(7);
    m_exchanger.lent = timer.get();
    run("lent = exchanger.lend()\n"
        "exchanger.exchange_oxdTimer([lent])\n");
    QCOMPARE(m_exchanger.taken, Ids({7}));

    timer.reset();
    run("exchanger.exchange_oxdTimer([lent, lent])\n");
    QCOMPARE(m_exchanger.taken, Ids({0, 0}));
}

void tst_oxdPython::singleObjectIsTaken_data()
{
    addClassRows();
}

void tst_oxdPython::singleObjectIsTaken()
{
    QFETCH(QString, name);
    run(QStringLiteral("first, second, third = exchanger.give_%1()\n").arg(name).toUtf8());
    for (const char *way : {"Value", "ConstReference", "Reference", "Pointer", "ConstPointer"}) {
        m_exchanger.taken.clear();
        run(QStringLiteral("exchanger.take%1_%2(second)\n").arg(QLatin1String(way), name).toUtf8());
        QCOMPARE(m_exchanger.taken, Ids({2}));
    }
}

void tst_oxdPython::wrongSingleObjectIsRefused_data()
{
    addClassRows();
}

void tst_oxdPython::wrongSingleObjectIsRefused()
{
    QFETCH(QString, name);
    const QString other =
        name == QLatin1String("oxdActionGraph") ? QStringLiteral("oxdWebEngine") : QStringLiteral("oxdActionGraph");
    m_exchanger.taken = {7};
    for (const char *way : {"Value", "ConstReference", "Reference", "Pointer", "ConstPointer"}) {
        for (const QString &wrong :
             {QStringLiteral("5"), QStringLiteral("exchanger"), QStringLiteral("[]"),
              QStringLiteral("exchanger.give_%1()").arg(name), QStringLiteral("exchanger.give_%1()[1]").arg(other)}) {
            // An oxdObject is the base of all.
            if (name == QLatin1String("oxdObject") && wrong.endsWith(QLatin1String("[1]")))
                continue;
            QCOMPARE(evaluate(QStringLiteral("outcome(exchanger.take%1_%2, %3)").arg(QLatin1String(way), name, wrong))
                         .toString(),
                     QStringLiteral("ValueError"));
        }
    }
    QCOMPARE(m_exchanger.taken, Ids({7}));

    for (const char *way : {"Value", "ConstReference", "Reference"}) {
        QCOMPARE(
            evaluate(QStringLiteral("outcome(exchanger.take%1_%2, None)").arg(QLatin1String(way), name)).toString(),
            QStringLiteral("ValueError"));
    }
    run(QStringLiteral("exchanger.takePointer_%1(None)\n").arg(name).toUtf8());
    QCOMPARE(m_exchanger.taken, Ids({0}));
}

void tst_oxdPython::referenceIsTheObjectItself()
{
    run("given = exchanger.give_oxdGlassMaterial()[0]\n"
        "exchanger.rebind(given)\n"
        "exchanger.takeValue_oxdGlassMaterial(given)\n");
    QCOMPARE(m_exchanger.taken, Ids({99}));
}

void tst_oxdPython::pointerKeepsItsClass()
{
    QCOMPARE(evaluate(QStringLiteral("exchanger.classOf(exchanger.give_oxdGlassMaterial()[0])")).toString(),
             QStringLiteral("oxdGlassMaterial"));
    run("exchanger.takePointer_oxdObject(exchanger.give_oxdGlassMaterial()[1])\n");
    QCOMPARE(m_exchanger.taken, Ids({2}));
    QCOMPARE(
        evaluate(QStringLiteral("outcome(exchanger.takePointer_oxdGlassMaterial, exchanger.give_oxdMaterial()[0])"))
            .toString(),
        QStringLiteral("ValueError"));
}

void tst_oxdPython::deletedSingleObjectIsNull()
{
    auto timer = std::make_unique<oxdTimer>(7);
    m_exchanger.lent = timer.get();
    run("lent = exchanger.lend()\n"
        "exchanger.takeValue_oxdTimer(lent)\n");
    QCOMPARE(m_exchanger.taken, Ids({7}));

    timer.reset();
    run("exchanger.takePointer_oxdTimer(lent)\n");
    QCOMPARE(m_exchanger.taken, Ids({0}));
    for (const char *way : {"Value", "ConstReference", "Reference"}) {
        QCOMPARE(
            evaluate(QStringLiteral("outcome(exchanger.take%1_oxdTimer, lent)").arg(QLatin1String(way))).toString(),
            QStringLiteral("ValueError"));
    }
}

void tst_oxdPython::overloadsAreToldApart()
{
    run("exchanger.takeAny(exchanger.give_oxdGlassMaterial()[1])\n");
    QCOMPARE(m_exchanger.taken, Ids({2}));
    run("exchanger.takeAny(exchanger.give_oxdMaterial())\n");
    QCOMPARE(m_exchanger.taken, Ids({1, 2, 3}));
    run("exchanger.takeAny(exchanger.give_oxdTimer()[1])\n");
    QCOMPARE(m_exchanger.taken, Ids({1002}));
}

void tst_oxdPython::propertyTakesTheObject()
{
    run("exchanger.material = exchanger.give_oxdGlassMaterial()[2]\n"
        "exchanger.takeValue_oxdMaterial(exchanger.material)\n");
    QCOMPARE(m_exchanger.material().objectId(), Q_UINT64_C(3));
    QCOMPARE(m_exchanger.taken, Ids({3}));
}

void tst_oxdPython::signalGivesTheObject()
{
    run("offers = []\n"
        "exchanger.connect('offered(oxdMaterial*)', offers.append)\n"
        "exchanger.connect('offeredCopy(oxdMaterial)', offers.append)\n");
    oxdMaterial material(7);
    Q_EMIT m_exchanger.offered(&material);
    Q_EMIT m_exchanger.offeredCopy(oxdGlassMaterial(8));
    Q_EMIT m_exchanger.offered(nullptr);
    run("exchanger.exchange_oxdMaterial(offers)\n"
        "exchanger.disconnect('offered(oxdMaterial*)', offers.append)\n"
        "exchanger.disconnect('offeredCopy(oxdMaterial)', offers.append)\n");
    QCOMPARE(m_exchanger.taken, Ids({7, 8, 0}));
    QCOMPARE(evaluate(QStringLiteral("offers[2] is None")), QVariant(true));
}

void tst_oxdPython::decoratorsOfTheHostGetTheObject()
{
    {
        const InterpreterLock lock;
        PythonQt::self()->addInstanceDecorators(new HostDecorators);
    }
    for (const char *name : {"oxdMaterial", "oxdGlassMaterial"}) {
        QCOMPARE(
            evaluate(QStringLiteral("exchanger.give_%1()[2].number(exchanger.give_%1()[1])").arg(QLatin1String(name)))
                .toString(),
            QStringLiteral("3-2"));
    }
    // Qt's own decorators of QObject stay in reach.
    QCOMPARE(evaluate(QStringLiteral("exchanger.give_oxdGlassMaterial()[0].parent() is None")), QVariant(true));
    QCOMPARE(evaluate(QStringLiteral("exchanger.give_oxdGlassMaterial()[0].inherits('oxdMaterial')")), QVariant(true));
}

void tst_oxdPython::objectOfAClassWithStateIsTaken()
{
    HostMaterial material(7);
    m_exchanger.lent = &material;
    for (const char *way : {"Value", "ConstReference", "Reference", "Pointer", "ConstPointer"}) {
        for (const char *base : {"oxdMaterial", "oxdBaseObject", "oxdObject"}) {
            m_exchanger.taken.clear();
            run(QStringLiteral("exchanger.take%1_%2(exchanger.lend())\n")
                    .arg(QLatin1String(way), QLatin1String(base))
                    .toUtf8());
            QCOMPARE(m_exchanger.taken, Ids({7}));
        }
    }
}

void tst_oxdPython::classThatPythonDoesNotKnowIsRefused()
{
    HostMaterial material(7);
    HostExchanger host;
    m_exchanger.lent = &material;
    const InterpreterLock lock;
    oxKernelInterface::the()->getPythonEngine()->addObject(QStringLiteral("host"), &host);
    QCOMPARE(evaluate(QStringLiteral("outcome(host.takeHostMaterial, exchanger.lend())")).toString(),
             QStringLiteral("ValueError"));
    QCOMPARE(host.taken, QString());

    oxdNode node(8);
    m_exchanger.lent = &node;
    m_exchanger.taken = {1};
    for (const char *way : {"Value", "ConstReference", "Reference", "Pointer", "ConstPointer"}) {
        QCOMPARE(evaluate(QStringLiteral("outcome(exchanger.take%1_oxdNode, exchanger.lend())").arg(QLatin1String(way)))
                     .toString(),
                 QStringLiteral("ValueError"));
    }
    QCOMPARE(m_exchanger.taken, Ids({1}));
    run("exchanger.takePointer_oxdSceneObject(exchanger.lend())\n");
    QCOMPARE(m_exchanger.taken, Ids({8}));
}

void tst_oxdPython::listOfPointersGivesCopies_data()
{
    addClassRows();
}

void tst_oxdPython::listOfPointersGivesCopies()
{
    QFETCH(QString, name);
    run(QStringLiteral("given = exchanger.givePointers_%1()\n"
                       "again = exchanger.givePointers_%1()\n"
                       "exchanger.exchange_%1(given)\n")
            .arg(name)
            .toUtf8());
    QCOMPARE(m_exchanger.taken, Ids({1, 2, 3, 0}));
    QCOMPARE(evaluate(QStringLiteral("[type(o) is oxKernelServices.%1 for o in given]").arg(name)),
             QVariant(QVariantList{true, true, true, false}));
    QCOMPARE(evaluate(QStringLiteral("given[3] is None")), QVariant(true));
    QCOMPARE(evaluate(QStringLiteral("given[0] is again[0]")), QVariant(false));
}

void tst_oxdPython::listOfPointersIsTaken_data()
{
    addClassRows();
}

void tst_oxdPython::listOfPointersIsTaken()
{
    QFETCH(QString, name);
    run(QStringLiteral("exchanger.takePointers_%1(list(reversed(exchanger.give_%1())))\n").arg(name).toUtf8());
    QCOMPARE(m_exchanger.taken, Ids({3, 2, 1}));
    const QString outcome = QStringLiteral("outcome(exchanger.takePointers_%1, %2)");
    for (const char *wrong : {"[exchanger]", "[None]", "[5]", "5"})
        QCOMPARE(evaluate(outcome.arg(name, QLatin1String(wrong))).toString(), QStringLiteral("ValueError"));
    run("class Raising(object):\n"
        "    def __len__(self):\n"
        "        return 1\n"
        "    def __getitem__(self, index):\n"
        "        raise KeyError()\n");
    QCOMPARE(evaluate(outcome.arg(name, QStringLiteral("Raising()"))).toString(), QStringLiteral("KeyError"));
    QCOMPARE(m_exchanger.taken, Ids({3, 2, 1}));
}

void tst_oxdPython::pointerGivesACopy_data()
{
    addClassRows();
}

void tst_oxdPython::pointerGivesACopy()
{
    QFETCH(QString, name);
    QCOMPARE(evaluate(QStringLiteral("type(exchanger.givePointer_%1(False)) is oxKernelServices.%1").arg(name)),
             QVariant(true));
    run(QStringLiteral("exchanger.exchange_%1([exchanger.givePointer_%1(False)])\n").arg(name).toUtf8());
    QCOMPARE(m_exchanger.taken, Ids({1}));
    QCOMPARE(evaluate(QStringLiteral("exchanger.givePointer_%1(True) is None").arg(name)), QVariant(true));
}

void tst_oxdPython::convertedElementsAreAppended()
{
    const InterpreterLock lock;
    QList<oxdImage> list = objects<oxdImage>({8, 9});
    const QList<oxdImage> shared = list;
    QVERIFY(convert(object("exchanger.give_oxdImage()"), &list));
    QCOMPARE(ids(list), Ids({8, 9, 1, 2, 3}));
    QCOMPARE(ids(shared), Ids({8, 9}));
}

void tst_oxdPython::emptySequenceLeavesTheListAlone()
{
    const InterpreterLock lock;
    QList<oxdImage> list = objects<oxdImage>({8, 9});
    for (const char *empty : {"[]", "()", "''", "xrange(0)"}) {
        QVERIFY(convert(object(empty), &list));
        QCOMPARE(ids(list), Ids({8, 9}));
    }
}

void tst_oxdPython::nonSequenceIsRejected_data()
{
    QTest::addColumn<QByteArray>("expression");
    for (const char *expression :
         {"5", "None", "{}", "object()", "exchanger", "iter([])", "set()", "oxKernelServices.oxdImage"}) {
        QTest::newRow(expression) << QByteArray(expression);
    }
}

void tst_oxdPython::nonSequenceIsRejected()
{
    QFETCH(QByteArray, expression);
    const InterpreterLock lock;
    QList<oxdImage> list = objects<oxdImage>({8, 9});
    QVERIFY(!convert(object(expression), &list));
    QVERIFY(!PyErr_Occurred());
    QCOMPARE(ids(list), Ids({8, 9}));
}

void tst_oxdPython::unusualSequences_data()
{
    QTest::addColumn<QByteArray>("length");
    QTest::addColumn<QByteArray>("item");
    QTest::addColumn<bool>("isConverted");
    QTest::addColumn<Ids>("expected");

    QTest::newRow("every item raises") << QByteArray("return 3") << QByteArray("raise ValueError()") << true
                                       << Ids({0, 0, 0});
    QTest::newRow("fewer items than claimed")
        << QByteArray("return 5") << QByteArray("return given[index]") << true << Ids({1, 2, 3, 0, 0});
    QTest::newRow("asks to exit") << QByteArray("return 1") << QByteArray("raise SystemExit()") << true << Ids({0});
    QTest::newRow("length raises") << QByteArray("raise ValueError()") << QByteArray("return given[0]") << false
                                   << Ids();
    QTest::newRow("negative length") << QByteArray("return -1") << QByteArray("return given[0]") << false << Ids();
    QTest::newRow("length is no number") << QByteArray("return 'x'") << QByteArray("return given[0]") << false << Ids();
    QTest::newRow("length beyond a machine word")
        << QByteArray("return sys.maxint * 2") << QByteArray("return given[0]") << false << Ids();
    QTest::newRow("longest length") << QByteArray("return sys.maxint") << QByteArray("raise IndexError()") << true
                                    << Ids();
    QTest::newRow("length of a trillion")
        << QByteArray("return 2**40") << QByteArray("return given[index]") << true << Ids({1, 2, 3});
    QTest::newRow("length of two billion")
        << QByteArray("return 2**31 - 1") << QByteArray("raise ValueError()") << true << Ids();
}

void tst_oxdPython::unusualSequences()
{
    QFETCH(QByteArray, length);
    QFETCH(QByteArray, item);
    QFETCH(bool, isConverted);
    QFETCH(Ids, expected);
    const InterpreterLock lock;
    for (const char *base : {"(object)", "", "(list)", "(tuple)"}) { // "": a class of the old style
        run("given = exchanger.give_oxdImage()\n"
            "class Sequence"
            + QByteArray(base)
            + ":\n"
              "    def __len__(self):\n"
              "        "
            + length
            + "\n"
              "    def __getitem__(self, index):\n"
              "        "
            + item + "\n");
        QList<oxdImage> list;
        const bool converted = convert(object("Sequence()"), &list);
        QVERIFY(!PyErr_Occurred());
        QCOMPARE(converted, isConverted);
        QCOMPARE(ids(list), expected);
    }
}

namespace {

// A sequence that claims a length, and whose items are there up to another one.
constexpr char claim[] = "given = exchanger.give_oxdImage()\n"
                         "class Claim(object):\n"
                         "    fetched = 0\n"
                         "    def __init__(self, length, end):\n"
                         "        self.length, self.end = length, end\n"
                         "    def __len__(self):\n"
                         "        return self.length\n"
                         "    def __getitem__(self, index):\n"
                         "        Claim.fetched += 1\n"
                         "        if index >= self.end:\n"
                         "            raise ValueError()\n"
                         "        return given[index % 3]\n";

} // namespace

void tst_oxdPython::longSequencesAreTaken_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<int>("length");
    QTest::newRow("a claim whose items are missing") << QByteArray("Claim(2**16, 1)") << (1 << 16);
    QTest::newRow("a claim whose items are there") << QByteArray("Claim(2**16 + 1, 2**16 + 1)") << (1 << 16) + 1;
    QTest::newRow("text") << QByteArray("'x' * 300000") << 300'000;
}

void tst_oxdPython::longSequencesAreTaken()
{
    QFETCH(QByteArray, expression);
    QFETCH(int, length);
    const InterpreterLock lock;
    run(claim);
    QList<oxdImage> list = objects<oxdImage>({8});
    QVERIFY(convert(object(expression), &list));
    QCOMPARE(list.size(), 1 + length);
    QCOMPARE(list.first().objectId(), Q_UINT64_C(8));
}

void tst_oxdPython::longClaimEndsAtTheFirstItemThatIsMissing_data()
{
    QTest::addColumn<QByteArray>("expression");
    QTest::addColumn<Ids>("expected");
    QTest::newRow("more than 2^16") << QByteArray("Claim(2**16 + 1, 4)") << Ids({8, 1, 2, 3, 1});
    QTest::newRow("two billion") << QByteArray("Claim(2**31 - 1, 4)") << Ids({8, 1, 2, 3, 1});
    QTest::newRow("a trillion") << QByteArray("Claim(2**40, 4)") << Ids({8, 1, 2, 3, 1});
    QTest::newRow("nothing of it") << QByteArray("Claim(2**40, 0)") << Ids({8});
}

void tst_oxdPython::longClaimEndsAtTheFirstItemThatIsMissing()
{
    QFETCH(QByteArray, expression);
    QFETCH(Ids, expected);
    const InterpreterLock lock;
    run(claim);
    QList<oxdImage> list = objects<oxdImage>({8});
    PyObject *sequence = object(expression);
    {
        const MemoryLimit limit(64 << 20); // what is merely claimed takes none
        QVERIFY(convert(sequence, &list));
    }
    QCOMPARE(ids(list), expected);
}

void tst_oxdPython::moreThanMemoryHoldsIsRefused_data()
{
    QTest::addColumn<QByteArray>("expression");
    for (const char *expression : {"xrange(2**40)", "Claim(2**40, 2**40)", "Claim(sys.maxint, sys.maxint)"})
        QTest::newRow(expression) << QByteArray(expression);
}

void tst_oxdPython::moreThanMemoryHoldsIsRefused()
{
    QFETCH(QByteArray, expression);
    const InterpreterLock lock;
    run(claim);
    QList<oxdImage> list = objects<oxdImage>({8, 9});
    PyObject *sequence = object(expression);
    {
        const MemoryLimit limit(64 << 20); // so that a failure here does not take all memory
        QVERIFY(!oxdObjectManager::convertToQListOfType<oxdImage>(sequence, &list, 0, true));
    }
    QVERIFY(PyErr_ExceptionMatches(PyExc_MemoryError));
    PyErr_Clear();
    QCOMPARE(ids(list), Ids({8, 9}));
    // It takes one look, and not all memory first.
    QVERIFY(evaluate(QStringLiteral("Claim.fetched")).toInt() <= 1);
    QCOMPARE(evaluate(QStringLiteral("outcome(exchanger.exchange_oxdImage, kept)")).toString(),
             QStringLiteral("MemoryError"));
}

void tst_oxdPython::whatFailsForMemoryLeavesTheListAlone()
{
    if (!MemoryLimit::isPossible())
        QSKIP("the sanitizer's own use of memory does not fit below a limit");
    const InterpreterLock lock;
    QList<oxdImage> list = objects<oxdImage>({8, 9});
    PyObject *sequence = object("(exchanger.give_oxdImage()[0],) * 2000000");
    bool converted = true;
    {
        // Two million objects take 400 MB.
        const MemoryLimit limit(32 << 20);
        converted = oxdObjectManager::convertToQListOfType<oxdImage>(sequence, &list, 0, true);
    }
    QVERIFY(!converted);
    QVERIFY(PyErr_ExceptionMatches(PyExc_MemoryError));
    PyErr_Clear();
    QCOMPARE(ids(list), Ids({8, 9}));
    run("del kept\n");
}

void tst_oxdPython::itemsKeepTheirReferences_data()
{
    QTest::addColumn<QByteArray>("expression");
    for (const char *expression : {"[item, item]", "(item, item)", "Sequence()"})
        QTest::newRow(expression) << QByteArray(expression);
}

void tst_oxdPython::itemsKeepTheirReferences()
{
    QFETCH(QByteArray, expression);
    const InterpreterLock lock;
    for (const char *item : {"exchanger.giveObject()", "exchanger.giveListInVariant()", "exchanger.lend()"}) {
        oxdTimer other;
        m_exchanger.lent = &other;
        run(QByteArray("item = ") + item
            + "\n"
              "class Sequence(object):\n"
              "    def __len__(self):\n"
              "        return 2\n"
              "    def __getitem__(self, index):\n"
              "        return item\n");
        PyObject *sequence = object(expression);
        PyObject *wrapper =
            PyDict_GetItemString(PyModule_GetDict(oxKernelInterface::the()->getPythonEngine()->object()), "item");
        const Py_ssize_t before = Py_REFCNT(wrapper);
        QList<oxdMaterial> list;
        QVERIFY(convert(sequence, &list));
        QCOMPARE(list.size(), 2);
        QCOMPARE(Py_REFCNT(wrapper), before);
    }
}

void tst_oxdPython::singleWrapperOwnsItsCopy()
{
    const InterpreterLock lock;
    oxdImage image(7);
    PyObject *wrapper = oxdObjectManager::convertFromType<oxdImage>(&image, 0);
    QCOMPARE(Py_REFCNT(wrapper), Py_ssize_t(1));
    const QPointer<QObject> copy = reinterpret_cast<PythonQtInstanceWrapper *>(wrapper)->_obj;
    QVERIFY(copy && copy != &image);
    Py_DECREF(wrapper);
    QVERIFY(!copy);
}

void tst_oxdPython::emptyListGivesAnEmptyPythonList()
{
    const InterpreterLock lock;
    const QList<oxdImage> list;
    PyObject *converted = oxdObjectManager::convertFromQListOfType<oxdImage>(&list, 0);
    QVERIFY(PyList_CheckExact(converted));
    QCOMPARE(PyList_GET_SIZE(converted), Py_ssize_t(0));
    QCOMPARE(Py_REFCNT(converted), Py_ssize_t(1));
    Py_DECREF(converted);
}

void tst_oxdPython::everyWrapperHasOneReferenceTooMany()
{
    const InterpreterLock lock;
    QList<oxdImage> list = objects<oxdImage>({1, 2});
    PyObject *converted = oxdObjectManager::convertFromQListOfType<oxdImage>(&list, 0);
    QCOMPARE(PyList_GET_SIZE(converted), Py_ssize_t(2));
    PyObject *wrapper = PyList_GET_ITEM(converted, 1);
    QCOMPARE(Py_REFCNT(wrapper), Py_ssize_t(2));

    const QPointer<QObject> copy = reinterpret_cast<PythonQtInstanceWrapper *>(wrapper)->_obj;
    QVERIFY(reinterpret_cast<PythonQtInstanceWrapper *>(wrapper)->_ownedByPythonQt);
    list[1].initialize(9);
    QCOMPARE(dynamic_cast<oxdImage *>(copy.data())->objectId(), Q_UINT64_C(2));

    Py_DECREF(converted);
    QVERIFY(copy);
    QCOMPARE(Py_REFCNT(wrapper), Py_ssize_t(1));
    // Python owns the copy: with the reference given back, it goes.
    Py_DECREF(wrapper);
    QVERIFY(!copy);
}

void tst_oxdPython::decoratorsAreNotPythonQtsToDelete()
{
    const auto children = PythonQt::priv()->children();
    for (const QObject *child : children)
        QVERIFY2(!dynamic_cast<const oxdObject *>(child), child->metaObject()->className());
}

QTEST_MAIN(tst_oxdPython)

#include "tst_oxdPython.moc"
