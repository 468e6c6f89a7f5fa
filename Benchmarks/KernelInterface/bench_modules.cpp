#include <benchmark/benchmark.h>

#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QSet>
#include <QVector>

#include <algorithm>
#include <random>

#include "CpuTime.h"
#include "QOXDockWidget.h"
#include "oxMainWindowServiceRemoteImpl.h"

// One hundred calls for modules anywhere among 3,000: beside creating or deleting the same widgets
// and actions, by who knows them already.

namespace {

constexpr int moduleCount = 3000;
constexpr int callCount = 100;

struct Module
{
    QString name;
    QOXDockWidget *dock;
    QAction *entry;
};

class Window
{
public:
    Window();

    QMenu *menu() const { return m_menu; }
    QMainWindow *window() { return &m_window; }
    oxMainWindowServiceRemoteImpl *service() { return &m_service; }

    /// Some of the modules, in the order of their making, from all over the window.
    QVector<Module> anyModules();
    /// Adds the modules that are not there, untimed.
    void complete();

private:
    QMainWindow m_window;
    QMenu *m_menu;
    oxMainWindowServiceRemoteImpl m_service;
    std::mt19937 m_random{1};
};

Window::Window()
{
    m_window.menuBar()->addMenu(QStringLiteral("&Help"));
    m_service.setWidget(&m_window);
    complete();
    m_menu = m_window.menuBar()->findChildren<QMenu *>().last();
    m_window.show();
}

void Window::complete()
{
    const auto docks = m_window.findChildren<QOXDockWidget *>(QString(), Qt::FindDirectChildrenOnly);
    QSet<QString> names;
    for (const QOXDockWidget *dock : docks)
        names.insert(dock->windowTitle());
    for (int i = 0; i < moduleCount; ++i) {
        const QString name = QStringLiteral("Module %1").arg(i);
        if (!names.contains(name))
            m_service.addModule(name, QStringLiteral("Scripts"), new QWidget, QString(), QIcon(), QString(),
                                Qt::NoDockWidgetArea);
    }
}

QVector<Module> Window::anyModules()
{
    const auto docks = m_window.findChildren<QOXDockWidget *>(QString(), Qt::FindDirectChildrenOnly);
    QHash<QString, QAction *> entries;
    const QList<QAction *> actions = m_menu->actions();
    for (QAction *action : actions)
        entries.insert(action->text(), action);
    QVector<QOXDockWidget *> some;
    std::sample(docks.begin(), docks.end(), std::back_inserter(some), callCount, m_random);
    QVector<Module> modules;
    for (QOXDockWidget *dock : qAsConst(some))
        modules.append({dock->windowTitle(), dock, entries.value(dock->windowTitle())});
    return modules;
}

Window *fullWindow()
{
    static auto *window = new Window; // not deleted: the application is gone before
    return window;
}

QVector<QWidget *> newWidgets()
{
    QVector<QWidget *> widgets;
    for (int i = 0; i < callCount; ++i)
        widgets.append(new QWidget);
    return widgets;
}

void addBare(benchmark::State &state)
{
    Window *full = fullWindow();
    for (auto _ : state) {
        const QVector<QWidget *> widgets = newWidgets();
        QVector<QObject *> made;
        timeIteration(state, [&] {
            for (QWidget *widget : widgets) {
                auto *dock =
                    new QOXDockWidget(QStringLiteral("New"), QStringLiteral("Scripts"), QIcon(), full->window());
                dock->setWidget(widget);
                made << dock << full->menu()->addAction(QStringLiteral("New"));
            }
        });
        qDeleteAll(made);
    }
}

void addOurs(benchmark::State &state)
{
    Window *full = fullWindow();
    for (auto _ : state) {
        const QVector<QWidget *> widgets = newWidgets();
        timeIteration(state, [&] {
            for (QWidget *widget : widgets)
                full->service()->addModule(QStringLiteral("New"), QStringLiteral("Scripts"), widget, QString(), QIcon(),
                                           QString(), Qt::NoDockWidgetArea);
        });
        for (int i = 0; i < callCount; ++i)
            full->service()->subModule(QStringLiteral("New"));
    }
}

void changeBare(benchmark::State &state)
{
    Window *full = fullWindow();
    for (auto _ : state) {
        const QVector<QWidget *> widgets = newWidgets();
        const QVector<Module> modules = full->anyModules();
        QVector<QAction *> entries;
        timeIteration(state, [&] {
            for (int i = 0; i < callCount; ++i) {
                delete modules.at(i).entry;
                delete modules.at(i).dock->widget();
                modules.at(i).dock->setWidget(widgets.at(i));
                entries << full->menu()->addAction(modules.at(i).name);
            }
        });
    }
}

void changeOurs(benchmark::State &state)
{
    Window *full = fullWindow();
    for (auto _ : state) {
        const QVector<QWidget *> widgets = newWidgets();
        const QVector<Module> modules = full->anyModules();
        timeIteration(state, [&] {
            for (int i = 0; i < callCount; ++i)
                full->service()->changeModule(modules.at(i).name, QStringLiteral("Scripts"), widgets.at(i));
        });
    }
}

void subBare(benchmark::State &state)
{
    Window *full = fullWindow();
    for (auto _ : state) {
        const QVector<Module> modules = full->anyModules();
        timeIteration(state, [&] {
            for (const Module &module : modules) {
                delete module.entry;
                delete module.dock;
            }
        });
        full->complete();
    }
}

void subOurs(benchmark::State &state)
{
    Window *full = fullWindow();
    for (auto _ : state) {
        const QVector<Module> modules = full->anyModules();
        timeIteration(state, [&] {
            for (const Module &module : modules)
                full->service()->subModule(module.name);
        });
        full->complete();
    }
}

void hideAll(const QVector<Module> &modules)
{
    for (const Module &module : modules)
        module.dock->hide();
}

// The first time takes long: the dock becomes a window.
QVector<Module> modulesShownBefore()
{
    const QVector<Module> modules = fullWindow()->anyModules();
    for (const Module &module : modules)
        module.dock->show();
    hideAll(modules);
    return modules;
}

void showBare(benchmark::State &state)
{
    for (auto _ : state) {
        const QVector<Module> modules = modulesShownBefore();
        timeIteration(state, [&] {
            for (const Module &module : modules)
                module.dock->show();
        });
        hideAll(modules);
    }
}

void showOurs(benchmark::State &state)
{
    Window *full = fullWindow();
    for (auto _ : state) {
        const QVector<Module> modules = modulesShownBefore();
        timeIteration(state, [&] {
            for (const Module &module : modules)
                full->service()->showModule(module.name);
        });
        hideAll(modules);
    }
}

void calls(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(callCount)->UseManualTime()->Iterations(1);
}

BENCHMARK(addBare)->Name("addModule/bare")->Apply(calls);
BENCHMARK(addOurs)->Name("addModule/ours")->Apply(calls);
BENCHMARK(changeBare)->Name("changeModule/bare")->Apply(calls);
BENCHMARK(changeOurs)->Name("changeModule/ours")->Apply(calls);
BENCHMARK(subBare)->Name("subModule/bare")->Apply(calls);
BENCHMARK(subOurs)->Name("subModule/ours")->Apply(calls);
BENCHMARK(showBare)->Name("showModule/bare")->Apply(calls);
BENCHMARK(showOurs)->Name("showModule/ours")->Apply(calls);

} // namespace
