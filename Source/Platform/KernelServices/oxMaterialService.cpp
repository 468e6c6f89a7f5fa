#include "oxMaterialService.h"

oxMaterialService::oxMaterialService(QObject *parent)
    : oxBaseService(parent)
{}

oxMaterialService::~oxMaterialService() = default;

QList<oxdMaterial> oxMaterialService::getMaterials()
{
    return call<QList<oxdMaterial>>(staticMetaObject, "getMaterials()");
}

QStringList oxMaterialService::getNames(const QList<oxdMaterial> &materials)
{
    return call<QStringList>(staticMetaObject, "getNames(QList<oxdMaterial>)", materials);
}

QStringList oxMaterialService::getTypes(const QList<oxdMaterial> &materials)
{
    return call<QStringList>(staticMetaObject, "getTypes(QList<oxdMaterial>)", materials);
}

QVariantList oxMaterialService::getColors(const QList<oxdMaterial> &materials)
{
    return call<QVariantList>(staticMetaObject, "getColors(QList<oxdMaterial>)", materials);
}

void oxMaterialService::setColor(const QList<oxdMaterial> &materials, const QColor &color)
{
    call(staticMetaObject, "setColor(QList<oxdMaterial>,QColor)", materials, color);
}

QVariantList oxMaterialService::getGloss(const QList<oxdMaterial> &materials)
{
    return call<QVariantList>(staticMetaObject, "getGloss(QList<oxdMaterial>)", materials);
}

void oxMaterialService::setGloss(const QList<oxdMaterial> &materials, double gloss)
{
    call(staticMetaObject, "setGloss(QList<oxdMaterial>,double)", materials, gloss);
}
