#pragma once

#include "Scene.h"
#include "oxMaterialService.h"

/// The materials of the scene.
class MaterialService : public oxMaterialService
{
    Q_OBJECT

public:
    /// @param scene not owned
    explicit MaterialService(Scene *scene, QObject *parent = nullptr);
    ~MaterialService() override;

public Q_SLOTS:
    QList<oxdMaterial> getMaterials() override;
    QStringList getNames(const QList<oxdMaterial> &materials) override;
    QStringList getTypes(const QList<oxdMaterial> &materials) override;
    QVariantList getColors(const QList<oxdMaterial> &materials) override;
    void setColor(const QList<oxdMaterial> &materials, const QColor &color) override;
    QVariantList getGloss(const QList<oxdMaterial> &materials) override;
    void setGloss(const QList<oxdMaterial> &materials, double gloss) override;

private:
    Scene::Material material(const oxdMaterial &handle) const;
    QVector<Scene::Material> sceneMaterials(const QList<oxdMaterial> &handles) const;

    Scene *m_scene;
};
