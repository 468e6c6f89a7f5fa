#pragma once

#include <QApplication>
#include <QByteArray>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QtTest>

struct PythonChildResult
{
    int exitCode;
    QByteArray standardOutput;
    QByteArray standardError;
};

/// For what depends on the environment, or happens once in a process: the test executable, started
/// again as a process that starts the library, runs Python statements in __main__ and ends.
class PythonChild
{
public:
    /// Both folders are unset, and so is what configures Python.
    PythonChild();

    QProcessEnvironment environment;
    QString workingFolder; ///< this process's when empty

    PythonChildResult run(const QString &statements) const;

    /// With standard error in standard output as well, in the order in which both are written.
    PythonChildResult runMerged(const QString &statements) const;

    /// The child's main(), when the arguments say that this is one.
    static bool isOne(const QStringList &arguments);
    static int main(const QStringList &arguments);

private:
    QTemporaryDir m_runtimeFolder; // without one, Qt prints a line of its own
};

/// QTEST_MAIN for tests that use PythonChild.
#define OX_TEST_MAIN_WITH_CHILD(TestClass)                                                                             \
    int main(int argc, char *argv[])                                                                                   \
    {                                                                                                                  \
        const QApplication application(argc, argv);                                                                    \
        if (PythonChild::isOne(QCoreApplication::arguments()))                                                         \
            return PythonChild::main(QCoreApplication::arguments());                                                   \
        TestClass test;                                                                                                \
        return QTest::qExec(&test, argc, argv);                                                                        \
    }
