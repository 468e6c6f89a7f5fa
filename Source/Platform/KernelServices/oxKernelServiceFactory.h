#pragma once

#include <QHash>
#include <QList>

#include <cstdio>
#include <typeinfo>

#include "oxBaseService.h"
#include "oxkernelservices_export.h"

/// The process-wide registry of services: one object for each interface type.
///
/// Holds plain pointers and owns nothing. Filled on the GUI thread during start-up and only
/// read afterwards; nothing is locked.
class OXKERNELSERVICES_EXPORT oxKernelServiceFactory
{
public:
    /// The one registry of the process, made on the first call.
    static oxKernelServiceFactory *the();

    /// A copy of all filed pointers, in the order in which their keys were first filed.
    QList<oxBaseService *> getServices();

    /// Called once for each service, right after it was filed: makes the argument types of its
    /// methods known to the meta-type system, but for data objects, which oxdObjectManager makes known.
    /// A null service is passed over.
    void registerTypes(oxBaseService *service) const;

    /// Files @p service under the key of the interface type T, then calls registerTypes().
    /// A service that was filed under that key before is replaced, neither deleted nor told.
    template<class T>
    void fileService(oxBaseService *service)
    {
        insert(serviceKey<T>(), service);
        registerTypes(service);
    }

    /// Files null in place of @p service under each key that it is filed under. It may be about to be
    /// destroyed: nothing of it is looked at.
    void forgetService(const oxBaseService *service)
    {
        for (oxBaseService *&filed : m_services) {
            if (filed == service)
                filed = nullptr;
        }
    }

    /// The service that is filed under the key of the interface type T. Nothing is cached.
    ///
    /// @return null and one line on standard error where nothing, or a null pointer, is filed:
    ///         "oxKernelServiceFactory: couldn't find class '19oxMainWindowService'!" or
    ///         "oxKernelServiceFactory: service '19oxMainWindowService' is NULL!"; null and no
    ///         line where the filed object is no T
    template<class T>
    T *getService() const
    {
        const auto filed = m_services.constFind(serviceKey<T>());
        if (filed == m_services.constEnd()) {
            fprintf(stderr, "oxKernelServiceFactory: couldn't find class '%s'!\n", typeid(T).name());
            return nullptr;
        }
        if (!filed.value()) {
            fprintf(stderr, "oxKernelServiceFactory: service '%s' is NULL!\n", typeid(T).name());
            return nullptr;
        }
        return dynamic_cast<T *>(filed.value());
    }

private:
    template<class T>
    static unsigned long serviceKey()
    {
        static const unsigned long key = typeid(T).hash_code(); // goes through the type's name each time
        return key;
    }

    void insert(unsigned long key, oxBaseService *service);

    QHash<unsigned long, oxBaseService *> m_services;
    QList<unsigned long> m_order; // a QHash has another order in each process
};
