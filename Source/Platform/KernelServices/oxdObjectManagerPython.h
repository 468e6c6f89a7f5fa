#pragma once

/// The templates of oxdObjectManager that concern Python. Only for who instantiates them: this
/// header needs those of PythonQt and Python, which oxdObjectManager.h does without.

#include <PythonQt.h>

#include <PythonQtConversion.h>
#include <PythonQtInstanceWrapper.h>
#include <QByteArray>
#include <QList>
#include <QString>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <typeinfo>

#include <unistd.h>

#include "oxdObject.h"
#include "oxdObjectManager.h"

/// The one door between a data object and its wrapper.
namespace oxdPython {

/// A new reference to a wrapper for a copy of the object, which Python deletes with the wrapper.
template<class T>
PyObject *wrapCopy(const T &object, const QByteArray &className)
{
    // PythonQt takes the address for that of a QObject, which a data object's own is not.
    QObject *copy = new T(object);
    return PythonQt::priv()->wrapPtr(copy, className, true);
}

/// The Python type of T's wrappers, which lives as long as Python; null before T is known to Python.
template<class T>
const void *wrapperType()
{
    PythonQtClassInfo *info = PythonQt::priv()->getClassInfo(&T::staticMetaObject);
    return info ? info->pythonQtClassWrapper() : nullptr;
}

/// The living T that is wrapped; null for everything else, and for null.
///
/// Nearly all items are of just the class T: these are found without a walk through their bases,
/// neither those in Python nor those in C++.
template<class T>
const T *unwrap(PyObject *item)
{
    static const void *const usualType = wrapperType<T>();
    if (!item || (Py_TYPE(item) != usualType && !PyObject_TypeCheck(item, &PythonQtInstanceWrapper_Type)))
        return nullptr;
    const QObject *object = reinterpret_cast<PythonQtInstanceWrapper *>(item)->_obj.data();
    if (object && typeid(*object) == typeid(T))
        return static_cast<const T *>(dynamic_cast<const void *>(object));
    return dynamic_cast<const T *>(object);
}

/// Tells PythonQt how to get from a QObject to the T, which it hands to slots: by itself it takes both
/// for the same address. Only a PythonQt with ThirdParty/PythonQt/virtual-bases.patch can be told.
template<class T>
void registerCast()
{
#ifdef PYTHONQT_HAS_QOBJECT_CAST
    const auto cast = [](QObject *object) -> void * { return dynamic_cast<T *>(object); };
    PythonQt::priv()->getClassInfo(&T::staticMetaObject)->setQObjectCast(cast);
#endif
}

struct GiveBack
{
    void operator()(PyObject *object) const { Py_DECREF(object); }
};

/// An item of a sequence, and the reference to it; null for one that cannot be fetched. Leaves no error.
using Item = std::unique_ptr<PyObject, GiveBack>;

inline Item fetch(PyObject *sequence, Py_ssize_t index)
{
    Item item(PySequence_GetItem(sequence, index));
    if (!item)
        PyErr_Clear();
    return item;
}

/// How many objects the machine's memory holds, about.
inline Py_ssize_t mostObjects()
{
    constexpr qint64 bytesPerObject = 256; // with what QObject keeps of each
    static const qint64 bytes = qint64(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGE_SIZE);
    return Py_ssize_t(std::min<qint64>(bytes / bytesPerObject, std::numeric_limits<int>::max()));
}

/// Appends an element for each item of a sequence that claims a length.
///
/// @throws std::bad_alloc where memory does not hold the elements
template<class T>
void appendItems(PyObject *sequence, Py_ssize_t length, QList<T> &objects)
{
    // Of a longer claim, only what is there takes memory.
    constexpr Py_ssize_t longestPadding = 1 << 16;

    // Before all memory is used up: then the system may end the process.
    if (length > mostObjects() - objects.size() && fetch(sequence, length - 1))
        throw std::bad_alloc();
    // Other sequences, and subclasses of these, merely claim a length.
    if (length > 0 && (PyList_CheckExact(sequence) || PyTuple_CheckExact(sequence)))
        objects.reserve(int(objects.size() + length));
    for (Py_ssize_t i = 0; i < length; ++i) {
        const Item item = fetch(sequence, i);
        if (!item && length > longestPadding)
            return;
        if (const T *object = unwrap<T>(item.get()))
            objects.append(*object);
        else
            objects.append(T());
    }
}

} // namespace oxdPython

template<class T>
void oxdObjectManager::registerToPython()
{
    static T instanceDecorator;

    PythonQt::self()->registerClass(&T::staticMetaObject, "oxKernelServices", nullptr, nullptr);
    PythonQt::self()->addInstanceDecorators(&instanceDecorator);
    // PythonQt has become the parent, and would delete in its clean-up what is not on the heap.
    instanceDecorator.setParent(nullptr);

    oxdPython::registerCast<T>();
    // By itself PythonQt copies a T well, and then takes the copy's address for that of a QObject.
    PythonQtConv::registerMetaTypeToPythonConverter(qMetaTypeId<T>(), convertFromType<T>);

    const QString listName = QString::asprintf("QList<%s>", T::staticMetaObject.className());
    const int list = qRegisterMetaType<QList<T>>(listName.toUtf8().constData());
    PythonQtConv::registerMetaTypeToPythonConverter(list, convertFromQListOfType<T>);
    PythonQtConv::registerPythonToMetaTypeConverter(list, convertToQListOfType<T>);
}

template<class T>
PyObject *oxdObjectManager::convertFromType(const void *object, int)
{
    if (!object)
        Py_RETURN_NONE;
    return oxdPython::wrapCopy(*static_cast<const T *>(object), T::staticMetaObject.className());
}

template<class T>
PyObject *oxdObjectManager::convertFromQListOfType(const void *list, int)
{
    const QList<T> &objects = *static_cast<const QList<T> *>(list);
    const QByteArray className = T::staticMetaObject.className();
    PyObject *result = PyList_New(objects.size());
    for (int i = 0; result && i < objects.size(); ++i) {
        PyObject *wrapper = oxdPython::wrapCopy(objects.at(i), className);
        // Deliberate: never given back, so that wrappers handed out in lists stay alive.
        Py_XINCREF(wrapper);
        PyList_SET_ITEM(result, i, wrapper);
    }
    return result;
}

template<class T>
bool oxdObjectManager::convertToQListOfType(PyObject *sequence, void *list, int, bool)
{
    if (!PySequence_Check(sequence))
        return false;
    const Py_ssize_t length = PySequence_Size(sequence);
    if (length < 0) {
        PyErr_Clear();
        return false;
    }
    QList<T> &objects = *static_cast<QList<T> *>(list);
    const int before = objects.size();
    try {
        oxdPython::appendItems(sequence, length, objects);
    } catch (const std::bad_alloc &) {
        while (objects.size() > before)
            objects.removeLast();
        PyErr_NoMemory();
        return false;
    }
    return true;
}
