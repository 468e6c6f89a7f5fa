#pragma once

#include <QList>
#include <QStringList>
#include <QVariantList>
#include <QVector>

#include "oxBaseService.h"
#include "oxdMaterials.h"
#include "oxdSceneObjects.h"

/// The nodes of the scene in the main process: what it shows, each with a material. Not for scripts,
/// which don't know oxdNode.
///
/// Operations take several nodes, and answer with one value for each, in their order. An element
/// that is no node of the scene has no name and no material and is not visible, and is skipped where
/// something is set. Changes can be undone.
///
/// Each operation calls the main process and answers with a default value without a connection.
class OXKERNELSERVICES_EXPORT oxNodeService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxNodeService")

public:
    explicit oxNodeService(QObject *parent = nullptr);
    ~oxNodeService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.

    /// All nodes, in the order in which they came into the scene.
    virtual QVector<oxdNode> getNodes();
    virtual QStringList getNames(const QVector<oxdNode> &nodes);
    /// A bool for each.
    virtual QVariantList getVisible(const QVector<oxdNode> &nodes);
    /// One undo step.
    virtual void setVisible(const QVector<oxdNode> &nodes, bool visible);
    virtual QList<oxdMaterial> getMaterials(const QVector<oxdNode> &nodes);
    /// Gives all the nodes the first material of the list. One undo step; changes nothing where that
    /// is no material of the scene.
    virtual void setMaterial(const QVector<oxdNode> &nodes, const QList<oxdMaterial> &materials);

Q_SIGNALS:
    /// Nodes came, went, or were changed.
    void nodesChanged();
};
