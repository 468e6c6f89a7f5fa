#include <QDataStream>
#include <QList>
#include <QVector>

#include <benchmark/benchmark.h>

#include "oxdMaterials.h"

// Lists and vectors of data objects to and from a stream, beside a plain loop that constructs the
// same objects and streams their ids.

namespace {

using Material = oxdGlassMaterial; // of the deepest class level

template<class Container>
Container materials(benchmark::State &state)
{
    Container objects;
    for (int64_t i = 0; i < state.range(0); ++i)
        objects.append(Material(quint64(i) + 1));
    return objects;
}

QByteArray image(benchmark::State &state)
{
    QByteArray data;
    QDataStream stream(&data, QIODevice::WriteOnly);
    stream << quint32(state.range(0));
    for (int64_t i = 0; i < state.range(0); ++i)
        stream << quint64(i) + 1;
    return data;
}

template<class Container>
void write(benchmark::State &state, void (*writeTo)(QDataStream &, const Container &))
{
    const auto objects = materials<Container>(state);
    QByteArray data;
    data.reserve(int(4 + 8 * state.range(0)));
    for (auto _ : state) {
        QDataStream stream(&data, QIODevice::WriteOnly);
        writeTo(stream, objects);
    }
}

template<class Container>
void read(benchmark::State &state, void (*readFrom)(QDataStream &, Container &))
{
    const QByteArray data = image(state);
    for (auto _ : state) {
        Container objects;
        QDataStream stream(data);
        readFrom(stream, objects);
        state.PauseTiming();
        if (objects.size() != state.range(0) || objects.last().objectId() != quint64(state.range(0)))
            state.SkipWithError("read something else");
        objects = Container();
        state.ResumeTiming();
    }
}

template<class Container>
void writeBare(QDataStream &stream, const Container &objects)
{
    stream << quint32(objects.size());
    for (const Material &object : objects)
        stream << object.objectId();
}

void readBareList(QDataStream &stream, QList<Material> &objects)
{
    quint32 count = 0;
    stream >> count;
    objects.reserve(int(count));
    for (quint32 i = 0; i < count; ++i) {
        Material object;
        quint64 id = 0;
        stream >> id;
        object.initialize(id);
        objects.append(object);
    }
}

void readBareVector(QDataStream &stream, QVector<Material> &objects)
{
    quint32 count = 0;
    stream >> count;
    objects.resize(int(count));
    for (Material &target : objects) {
        Material object;
        quint64 id = 0;
        stream >> id;
        object.initialize(id);
        target = object;
    }
}

template<class Container>
void writeOurs(QDataStream &stream, const Container &objects)
{
    stream << objects;
}

template<class Container>
void readOurs(QDataStream &stream, Container &objects)
{
    stream >> objects;
}

template<class Function, class Work>
void registerPair(const std::string &task, Function function, Work bare, Work ours)
{
    for (const auto &[variant, work] : {std::pair("/bare", bare), std::pair("/ours", ours)})
        benchmark::RegisterBenchmark((task + variant).c_str(), function, work)->Arg(10)->Arg(10'000)->Arg(1'000'000);
}

template<class Container>
void registerContainer(const std::string &name, void (*readBare)(QDataStream &, Container &))
{
    using Write = void (*)(QDataStream &, const Container &);
    using Read = void (*)(QDataStream &, Container &);
    registerPair<void (*)(benchmark::State &, Write)>("write " + name, write<Container>, writeBare<Container>,
                                                      writeOurs<Container>);
    registerPair<void (*)(benchmark::State &, Read)>("read " + name, read<Container>, readBare, readOurs<Container>);
}

const bool registered = [] {
    registerContainer<QList<Material>>("QList", readBareList);
    registerContainer<QVector<Material>>("QVector", readBareVector);
    return true;
}();

} // namespace
