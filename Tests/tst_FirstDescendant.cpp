#include <QTest>
#include <QTimer>

#include "FirstDescendant.h"

namespace {

// Every second child is a timer, every third has a class derived from that.
class DerivedTimer : public QTimer
{
    Q_OBJECT
};

QObject *createChild(int number, QObject *parent)
{
    QObject *child = number % 3 == 2 ? new DerivedTimer : number % 2 ? new QTimer : new QObject;
    child->setParent(parent);
    return child;
}

void populate(QObject *root, int depth, int childrenOfEach)
{
    for (int i = 0; depth > 0 && i < childrenOfEach; ++i)
        populate(createChild(i + depth, root), depth - 1, childrenOfEach);
}

template<class T>
QList<T *> visited(const QObject *root)
{
    QList<T *> objects;
    firstDescendant<T>(root, [&objects](T *object) {
        objects.append(object);
        return false;
    });
    return objects;
}

} // namespace

class tst_FirstDescendant : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void visitsInTheOrderOfFindChildren_data();
    void visitsInTheOrderOfFindChildren();
    void stopsAtTheFirstMatch();
    void parentComesBeforeItsChildrenAndTheyBeforeItsSiblings();
    void rootItselfIsNoDescendant();
    void objectOfAnotherClassIsNotAskedButItsChildrenAre();
    void nothingMatchesGivesNull();
};

void tst_FirstDescendant::visitsInTheOrderOfFindChildren_data()
{
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("childrenOfEach");

    QTest::newRow("no children") << 0 << 0;
    QTest::newRow("one level") << 1 << 7;
    QTest::newRow("tree") << 4 << 4;
    QTest::newRow("chain") << 40 << 1;
}

void tst_FirstDescendant::visitsInTheOrderOfFindChildren()
{
    QFETCH(int, depth);
    QFETCH(int, childrenOfEach);
    QObject root;
    populate(&root, depth, childrenOfEach);

    QCOMPARE(visited<QObject>(&root), root.findChildren<QObject *>());
    QCOMPARE(visited<QTimer>(&root), root.findChildren<QTimer *>());
    QCOMPARE(visited<DerivedTimer>(&root), root.findChildren<DerivedTimer *>());
}

void tst_FirstDescendant::stopsAtTheFirstMatch()
{
    QObject root;
    populate(&root, 3, 4);
    const QList<QTimer *> timers = root.findChildren<QTimer *>();
    QVERIFY(timers.size() > 20);

    for (int i = 0; i < timers.size(); ++i) {
        int asked = 0;
        const auto isWanted = [&](QTimer *timer) {
            ++asked;
            return timers.indexOf(timer) >= i;
        };
        QCOMPARE(firstDescendant<QTimer>(&root, isWanted), timers.at(i));
        QCOMPARE(asked, i + 1);
    }
}

void tst_FirstDescendant::parentComesBeforeItsChildrenAndTheyBeforeItsSiblings()
{
    QObject root;
    auto *first = new QTimer(&root);
    auto *second = new QTimer(&root);
    auto *childOfFirst = new QTimer(first);

    const QList<QTimer *> expected{first, childOfFirst, second};
    QCOMPARE(visited<QTimer>(&root), expected);
}

void tst_FirstDescendant::rootItselfIsNoDescendant()
{
    QTimer root;
    QTimer child(&root);

    QCOMPARE(visited<QTimer>(&root), QList<QTimer *>{&child});
}

void tst_FirstDescendant::objectOfAnotherClassIsNotAskedButItsChildrenAre()
{
    QObject root;
    QTimer timer(new QObject(new QObject(&root)));

    QCOMPARE(visited<QTimer>(&root), QList<QTimer *>{&timer});
}

void tst_FirstDescendant::nothingMatchesGivesNull()
{
    QObject root;
    populate(&root, 3, 3);

    QVERIFY(!firstDescendant<QObject>(&root, [](const QObject *) { return false; }));
    QVERIFY(!firstDescendant<tst_FirstDescendant>(&root, [](const QObject *) { return true; }));
}

QTEST_GUILESS_MAIN(tst_FirstDescendant)
#include "tst_FirstDescendant.moc"
