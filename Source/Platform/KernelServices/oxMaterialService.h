#pragma once

#include <QColor>
#include <QList>
#include <QStringList>
#include <QVariantList>

#include "oxBaseService.h"
#include "oxdMaterials.h"

/// The materials of the scene in the main process.
///
/// Operations take several materials, and answer with one value for each, in their order: so a list
/// of all of them needs one call. An element that is no material of the scene has no name, no type
/// and the invalid colour, and is skipped where something is set. Changes can be undone.
///
/// Each operation calls the main process and answers with a default value without a connection.
class OXKERNELSERVICES_EXPORT oxMaterialService : public oxBaseService
{
    Q_OBJECT
    Q_CLASSINFO("RemoteObject Type", "oxMaterialService")

public:
    explicit oxMaterialService(QObject *parent = nullptr);
    ~oxMaterialService() override;

public Q_SLOTS:
    // Their order is that of the slots in the table of virtual functions: part of the interface.

    /// All materials, in the order in which they came into the scene.
    virtual QList<oxdMaterial> getMaterials();
    virtual QStringList getNames(const QList<oxdMaterial> &materials);
    /// Names of classes, for example "oxdPhongMaterial": the elements of a list are all oxdMaterial.
    virtual QStringList getTypes(const QList<oxdMaterial> &materials);
    /// A QColor for each.
    virtual QVariantList getColors(const QList<oxdMaterial> &materials);
    /// One undo step; an invalid colour changes nothing.
    virtual void setColor(const QList<oxdMaterial> &materials, const QColor &color);
    /// A double for each: 0 is matt, 1 a sharp highlight.
    virtual QVariantList getGloss(const QList<oxdMaterial> &materials);
    /// One undo step; what is beyond 0 or 1 is taken as that.
    virtual void setGloss(const QList<oxdMaterial> &materials, double gloss);

Q_SIGNALS:
    /// Materials came, went or look different.
    void materialsChanged();
};
