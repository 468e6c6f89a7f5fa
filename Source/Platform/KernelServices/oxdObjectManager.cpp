#include "oxdObjectManager.h"

#include <algorithm>
#include <numeric>

namespace {

struct KernelType
{
    const QMetaObject *metaObject;
    unsigned long long externalType;
};

// A type's id is its place in the table, counted from 1.
QVector<KernelType> &table()
{
    static QVector<KernelType> types;
    return types;
}

KernelType *find(unsigned long long kernelType)
{
    const bool known = kernelType >= 1 && kernelType <= quint64(table().size());
    return known ? &table()[int(kernelType) - 1] : nullptr;
}

} // namespace

unsigned long long oxdObjectManager::registerType(const QMetaObject *metaObject)
{
    if (!metaObject)
        return 0;
    QVector<KernelType> &types = table();
    const auto *known = std::find_if(types.cbegin(), types.cend(),
                                     [metaObject](const KernelType &type) { return type.metaObject == metaObject; });
    if (known != types.cend())
        return quint64(known - types.cbegin()) + 1;
    types.append({metaObject, 0});
    return quint64(types.size());
}

void oxdObjectManager::registerExternalType(unsigned long long kernelType, unsigned long long externalType)
{
    if (KernelType *type = find(kernelType))
        type->externalType = externalType;
}

QVector<unsigned long long> oxdObjectManager::kernelTypes()
{
    QVector<unsigned long long> ids(table().size());
    std::iota(ids.begin(), ids.end(), 1);
    return ids;
}

const QMetaObject *oxdObjectManager::metaObject(unsigned long long kernelType)
{
    const KernelType *type = find(kernelType);
    return type ? type->metaObject : nullptr;
}

unsigned long long oxdObjectManager::externalType(unsigned long long kernelType)
{
    const KernelType *type = find(kernelType);
    return type ? type->externalType : 0;
}
