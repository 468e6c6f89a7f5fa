#include <QByteArray>
#include <QMetaType>
#include <QVector>

#include <benchmark/benchmark.h>

#include "oxDataObjectTypes.h"
#include "oxdCatalogue.h"

// What start-up spends on the data-object types, beside as many meta-types that are registered by
// their bare names. Only the first registration counts, so that each runs once in a process.

namespace {

void bare(benchmark::State &state)
{
#define ONE(Class, Levels, Container, Python) +1
    constexpr int types = 3 * (OXD_CLASSES(ONE)) + 1;
    QVector<QByteArray> names;
    for (int i = 0; i < types; ++i)
        names.append("BareTypeNumber" + QByteArray::number(i));
    for (auto _ : state) {
        for (const QByteArray &name : qAsConst(names)) {
            const int type = QMetaType::registerNormalizedType(
                name, [](void *) {}, [](void *, const void *) -> void * { return nullptr; }, 8,
                QMetaType::NeedsConstruction | QMetaType::NeedsDestruction, nullptr);
            QMetaType::registerStreamOperators(
                type, [](QDataStream &, const void *) {}, [](QDataStream &, void *) {});
        }
    }
}

void ours(benchmark::State &state)
{
    for (auto _ : state)
        registerDataObjectTypes();
}

BENCHMARK(bare)->Name("register all/bare")->Iterations(1)->Repetitions(1);
BENCHMARK(ours)->Name("register all/ours")->Iterations(1)->Repetitions(1);

} // namespace
