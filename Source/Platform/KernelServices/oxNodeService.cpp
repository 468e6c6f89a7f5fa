#include "oxNodeService.h"

oxNodeService::oxNodeService(QObject *parent)
    : oxBaseService(parent)
{}

oxNodeService::~oxNodeService() = default;

QVector<oxdNode> oxNodeService::getNodes()
{
    return call<QVector<oxdNode>>(staticMetaObject, "getNodes()");
}

QStringList oxNodeService::getNames(const QVector<oxdNode> &nodes)
{
    return call<QStringList>(staticMetaObject, "getNames(QVector<oxdNode>)", nodes);
}

QVariantList oxNodeService::getVisible(const QVector<oxdNode> &nodes)
{
    return call<QVariantList>(staticMetaObject, "getVisible(QVector<oxdNode>)", nodes);
}

void oxNodeService::setVisible(const QVector<oxdNode> &nodes, bool visible)
{
    call(staticMetaObject, "setVisible(QVector<oxdNode>,bool)", nodes, visible);
}

QList<oxdMaterial> oxNodeService::getMaterials(const QVector<oxdNode> &nodes)
{
    return call<QList<oxdMaterial>>(staticMetaObject, "getMaterials(QVector<oxdNode>)", nodes);
}

void oxNodeService::setMaterial(const QVector<oxdNode> &nodes, const QList<oxdMaterial> &materials)
{
    call(staticMetaObject, "setMaterial(QVector<oxdNode>,QList<oxdMaterial>)", nodes, materials);
}
