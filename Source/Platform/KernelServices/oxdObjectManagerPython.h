#pragma once

/// The templates of oxdObjectManager that concern Python. Only for who instantiates them: this
/// header needs those of PythonQt and Python, which oxdObjectManager.h does without.

#include <PythonQt.h>

#include <PythonQtConversion.h>
#include <PythonQtInstanceWrapper.h>
#include <QByteArray>
#include <QList>
#include <QString>

#include <limits>
#include <typeinfo>

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

/// The length of a sequence that can be converted; negative for one that cannot. Leaves no error.
///
/// Lists and tuples have the items that they say they have. Other sequences, their subclasses too,
/// merely claim a length, which nothing need stand behind, and each item that is claimed costs an
/// object.
inline Py_ssize_t convertibleLength(PyObject *sequence)
{
    constexpr Py_ssize_t longestClaim = 1 << 24;
    constexpr Py_ssize_t longestList = std::numeric_limits<int>::max() / 2; // a QList counts with int
    const Py_ssize_t length = PySequence_Size(sequence);
    if (length < 0)
        PyErr_Clear();
    const bool holdsItsItems = PyList_CheckExact(sequence) || PyTuple_CheckExact(sequence);
    return length > (holdsItsItems ? longestList : longestClaim) ? -1 : length;
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
    const Py_ssize_t length = oxdPython::convertibleLength(sequence);
    if (length < 0)
        return false;
    QList<T> &objects = *static_cast<QList<T> *>(list);
    if (length > 0)
        objects.reserve(int(objects.size() + length));
    for (Py_ssize_t i = 0; i < length; ++i) {
        PyObject *item = PySequence_GetItem(sequence, i);
        if (!item)
            PyErr_Clear();
        if (const T *object = oxdPython::unwrap<T>(item))
            objects.append(*object);
        else
            objects.append(T());
        Py_XDECREF(item);
    }
    return true;
}
