#pragma once

#include <QDataStream>
#include <QList>
#include <QMetaType>
#include <QVector>

#include "oxkernelservices_export.h"

struct QMetaObject;
struct _object;
typedef struct _object PyObject;

/// The kernel's table of data-object types, and the bridges from a type to Qt and to Python.
///
/// A type is never taken out again. GUI thread only; the operations that concern Python need the
/// interpreter lock. What concerns Python is defined in oxdObjectManagerPython.h.
class OXKERNELSERVICES_EXPORT oxdObjectManager
{
public:
    /// Enters a class into the table.
    /// @return its kernel type id, the same at every call; 0 for null, which is not entered
    static unsigned long long registerType(const QMetaObject *metaObject);

    /// Records the external type id that belongs to a kernel type; 0 is none. Does nothing for a
    /// type that is not in the table.
    static void registerExternalType(unsigned long long kernelType, unsigned long long externalType);

    /// The ids of the table, in the order of their first registration.
    static QVector<unsigned long long> kernelTypes();

    /// The class of a kernel type; null for a type that is not in the table.
    static const QMetaObject *metaObject(unsigned long long kernelType);

    /// The external type id recorded for a kernel type; 0 for none.
    static unsigned long long externalType(unsigned long long kernelType);

    /// Makes T, QVector<T> and QList<T> known to the meta-type system, gives the three their stream
    /// operators, and enters T into the kernel's table. A second call hands out no new ids and does
    /// the rest again.
    template<class T>
    static void registerType(unsigned long long externalType);

    /// Makes T and QList<T> known to Python, in the package oxKernelServices.
    ///
    /// Scripts get objects as copies: single ones, from a pointer too, and lists of them or of pointers
    /// to them. A null pointer is None. They hand over lists, or single objects: a slot that takes a T
    /// by value, reference or pointer, or a list of pointers, gets the object that the wrapper holds, of
    /// T or a class derived from it; anything else is refused with Python's ValueError. A pointer is null
    /// for None, and for a wrapper whose object has been deleted.
    ///
    /// Single objects and lists of pointers need a PythonQt with ThirdParty/PythonQt/virtual-bases.patch.
    /// Any other passes the address of the QObject, which with a virtual base is not that of the T: there
    /// a slot may take lists of T and QObject*, and return all but lists of pointers.
    template<class T>
    static void registerToPython();

    /// A wrapper for a copy of an object, which Python owns; None for null.
    ///
    /// @param object a T or null; its meta-type id, the second argument, is not used
    template<class T>
    static PyObject *convertFromType(const void *object, int metaType);

    /// A new Python list with a wrapper for a copy of each element, which Python owns; null, with
    /// Python's error set, without memory.
    ///
    /// @param list a QList<T>; its meta-type id, the second argument, is not used
    template<class T>
    static PyObject *convertFromQListOfType(const void *list, int metaType);

    /// Appends an element for each item of a Python sequence.
    ///
    /// An item that is no wrapper of a living T, or that cannot be fetched, gives an element without
    /// object. A sequence that claims more than 65,536 items ends at the first that cannot be fetched.
    /// No Python error is left behind, but for MemoryError.
    ///
    /// @param sequence any Python object
    /// @param list     a QList<T>, which is not cleared; its meta-type id and the strictness flag,
    ///                 the other arguments, are not used
    /// @return false, and the list is as it was, for what is no sequence or has no length, and, with
    ///         Python's MemoryError set, where memory does not hold the elements
    template<class T>
    static bool convertToQListOfType(PyObject *sequence, void *list, int metaType, bool strict);
};

template<class T>
void oxdObjectManager::registerType(unsigned long long externalType)
{
    qMetaTypeId<T>();
    qMetaTypeId<QVector<T>>();
    qMetaTypeId<QList<T>>();

    qRegisterMetaTypeStreamOperators<T>();
    qRegisterMetaTypeStreamOperators<QList<T>>();
    qRegisterMetaTypeStreamOperators<QVector<T>>();

    registerExternalType(registerType(&T::staticMetaObject), externalType);
}
