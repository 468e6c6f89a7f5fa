#include "PluginHost.h"

#include <QAction>
#include <QComboBox>
#include <QDial>
#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTableView>
#include <QTimer>
#include <QtTest>

#include "OutputCapture.h"
#include "Patience.h"

/// Each plugin of Examples/Scripts that uses PySide2 does what it shows, beside others that use
/// PythonQt.
class tst_pySide2Examples : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void eachLoadsWithoutAnError();
    void lensCalculatorCalculates();
    void paintTableSortsFiltersAndIsEdited();
    void orbitsMoveUntilTheyAreClicked();

private:
    QWidget *content(const char *module) const;

    PluginHost *m_host = nullptr;
};

void tst_pySide2Examples::initTestCase()
{
    m_host = new PluginHost; // never deleted: Python's wrappers may outlive it
    PluginHost::run(QStringLiteral("sys.path[:0] = ['" PYSIDE2_DIR "', '" SOURCE_DIR "/Share/lib/python']"));
}

QWidget *tst_pySide2Examples::content(const char *module) const
{
    return m_host->dock(QString::fromLatin1(module))->widget();
}

void tst_pySide2Examples::eachLoadsWithoutAnError()
{
    for (int i = 0; i < 5; ++i) {
        for (const char *name : {"LensCalculator", "ColorMixer", "Orbits", "Spirograph", "PaintTable", "Stopwatch"}) {
            const QString path = QStringLiteral(SOURCE_DIR "/Examples/Scripts/%1.py").arg(QLatin1String(name));
            const Output output = outputOf([this, &path] { m_host->load(path); });
            QCOMPARE(output.standardError, QByteArray());
            QVERIFY(!content(name)->layout()->isEmpty());
            QCoreApplication::processEvents();
        }
    }
}

void tst_pySide2Examples::lensCalculatorCalculates()
{
    QWidget *calculator = content("LensCalculator");
    const auto *angles = calculator->findChild<QLabel *>(QStringLiteral("angles"));
    const auto *field = calculator->findChild<QLabel *>(QStringLiteral("field"));
    QCOMPARE(angles->text(), QString::fromUtf8("54.4° × 37.8°"));
    QCOMPARE(field->text(), QString::fromUtf8("5.14 m × 3.43 m"));

    calculator->findChild<QDial *>(QStringLiteral("dial"))->setValue(100);
    calculator->findChild<QDoubleSpinBox *>(QStringLiteral("distance"))->setValue(10);
    QCOMPARE(calculator->findChild<QSpinBox *>(QStringLiteral("focalLength"))->value(), 100);
    QCOMPARE(field->text(), QString::fromUtf8("3.60 m × 2.40 m"));

    auto *sensor = calculator->findChild<QComboBox *>(QStringLiteral("sensor"));
    sensor->setFocus();
    QTest::keyClick(sensor, Qt::Key_Down);
    QCOMPARE(sensor->currentText(), QStringLiteral("APS-C"));
    QCOMPARE(field->text(), QString::fromUtf8("2.35 m × 1.56 m"));
}

void tst_pySide2Examples::paintTableSortsFiltersAndIsEdited()
{
    QWidget *table = content("PaintTable");
    QAbstractItemModel *shown = table->findChild<QTableView *>()->model();
    const auto text = [shown](int row, int column) { return shown->index(row, column).data().toString(); };
    QCOMPARE(shown->rowCount(), 8);
    QCOMPARE(text(0, 0), QStringLiteral("Arctic white"));
    QCOMPARE(shown->index(0, 1).data(Qt::DecorationRole).value<QColor>(), QColor(0xeef1f4));

    table->findChild<QTableView *>()->sortByColumn(2, Qt::DescendingOrder);
    QCOMPARE(text(0, 0), QStringLiteral("Terracotta"));

    table->findChild<QLineEdit *>()->setText(QStringLiteral("M"));
    QCOMPARE(shown->rowCount(), 2);
    QVERIFY(table->findChild<QLabel *>()->text() == QLatin1String("2 of 8 paints"));
    table->findChild<QLineEdit *>()->clear();
    QCOMPARE(shown->rowCount(), 8);

    QVERIFY(shown->setData(shown->index(7, 2), 0.9));
    QVERIFY(!shown->setData(shown->index(7, 2), 1.1));
    QVERIFY(!shown->setData(shown->index(0, 1), QStringLiteral("no colour")));
    QCOMPARE(text(0, 0), QStringLiteral("Midnight"));
}

void tst_pySide2Examples::orbitsMoveUntilTheyAreClicked()
{
    m_host->window.show();
    m_host->entry(QStringLiteral("Orbits"))->trigger();
    QWidget *orbits = content("Orbits")->findChild<QWidget *>();
    QTRY_VERIFY(orbits->isVisible());
    const QImage first = orbits->grab().toImage();
    QTRY_VERIFY(orbits->grab().toImage() != first);

    QTest::mouseClick(orbits, Qt::LeftButton);
    const QImage stopped = orbits->grab().toImage();
    QTimer frames;
    const QSignalSpy passed(&frames, &QTimer::timeout);
    frames.start(33);
    QTRY_VERIFY(passed.size() >= 4);
    QCOMPARE(orbits->grab().toImage(), stopped);
    QTest::mouseClick(orbits, Qt::LeftButton);
    QTRY_VERIFY(orbits->grab().toImage() != stopped);
    m_host->window.hide();
}

QTEST_MAIN(tst_pySide2Examples)
#include "tst_pySide2Examples.moc"
