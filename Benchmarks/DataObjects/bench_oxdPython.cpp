#include "oxdObjectManagerPython.h"

#include <benchmark/benchmark.h>

#include "oxKernelInterfaceRemote.h"
#include "oxQRPCClient.h"
#include "oxdMaterials.h"

// Lists of data objects to and from Python: beside a loop that only wraps the same copies, and
// beside a loop over the items that only copies the handles.

namespace {

using Material = oxdGlassMaterial;
using List = QList<Material>;
using Manager = oxdObjectManager;

void startPython()
{
    static const bool started = [] {
        static oxQRPCClient client;
        oxKernelInterface::the()->init(&client, true);
        return true;
    }();
    Q_UNUSED(started)
}

List materials(benchmark::State &state)
{
    List objects;
    for (int64_t i = 0; i < state.range(0); ++i)
        objects.append(Material(quint64(i) + 1));
    return objects;
}

PyObject *wrapBare(const void *list, int)
{
    const List &objects = *static_cast<const List *>(list);
    const QByteArray className = Material::staticMetaObject.className();
    PyObject *result = PyList_New(objects.size());
    for (int i = 0; i < objects.size(); ++i) {
        QObject *copy = new Material(objects.at(i));
        PyObject *wrapper = PythonQt::priv()->wrapPtr(copy, className, true);
        Py_INCREF(wrapper);
        PyList_SET_ITEM(result, i, wrapper);
    }
    return result;
}

bool copyBare(PyObject *sequence, void *list, int, bool)
{
    List &objects = *static_cast<List *>(list);
    PyObject *fast = PySequence_Fast(sequence, "");
    const Py_ssize_t length = PySequence_Fast_GET_SIZE(fast);
    for (Py_ssize_t i = 0; i < length; ++i) {
        auto *wrapper = reinterpret_cast<PythonQtInstanceWrapper *>(PySequence_Fast_GET_ITEM(fast, i));
        // All are of the same class: no look at what each one is.
        objects.append(*static_cast<const Material *>(dynamic_cast<const void *>(wrapper->_obj.data())));
    }
    Py_DECREF(fast);
    return true;
}

// A converted list keeps its objects alive for good: here they go, with the list.
void destroy(PyObject *list)
{
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(list); ++i)
        Py_DECREF(PyList_GET_ITEM(list, i));
    Py_DECREF(list);
}

void toPython(benchmark::State &state, PyObject *(*convert)(const void *, int))
{
    startPython();
    const PyGILState_STATE lock = PyGILState_Ensure();
    const List objects = materials(state);
    for (auto _ : state) {
        PyObject *list = convert(&objects, 0);
        state.PauseTiming();
        destroy(list);
        state.ResumeTiming();
    }
    PyGILState_Release(lock);
}

void fromPython(benchmark::State &state, bool (*convert)(PyObject *, void *, int, bool))
{
    startPython();
    const PyGILState_STATE lock = PyGILState_Ensure();
    const List objects = materials(state);
    PyObject *list = Manager::convertFromQListOfType<Material>(&objects, 0);
    for (auto _ : state) {
        List converted;
        convert(list, &converted, 0, false);
        state.PauseTiming();
        if (converted.size() != objects.size() || converted.last().objectId() != quint64(objects.size()))
            state.SkipWithError("converted to something else");
        converted = List();
        state.ResumeTiming();
    }
    destroy(list);
    PyGILState_Release(lock);
}

void sizes(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Arg(10)->Arg(10'000)->Arg(1'000'000);
}

BENCHMARK_CAPTURE(toPython, bare, wrapBare)->Name("list to Python/bare")->Apply(sizes);
BENCHMARK_CAPTURE(toPython, ours, Manager::convertFromQListOfType<Material>)->Name("list to Python/ours")->Apply(sizes);
BENCHMARK_CAPTURE(fromPython, bare, copyBare)->Name("Python to list/bare")->Apply(sizes);
BENCHMARK_CAPTURE(fromPython, ours, Manager::convertToQListOfType<Material>)->Name("Python to list/ours")->Apply(sizes);

} // namespace
