#pragma once

#include "Scene.h"
#include "oxNodeService.h"

/// The nodes of the scene.
class NodeService : public oxNodeService
{
    Q_OBJECT

public:
    /// @param scene not owned
    explicit NodeService(Scene *scene, QObject *parent = nullptr);
    ~NodeService() override;

public Q_SLOTS:
    QVector<oxdNode> getNodes() override;
    QStringList getNames(const QVector<oxdNode> &nodes) override;
    QVariantList getVisible(const QVector<oxdNode> &nodes) override;
    void setVisible(const QVector<oxdNode> &nodes, bool visible) override;
    QList<oxdMaterial> getMaterials(const QVector<oxdNode> &nodes) override;
    void setMaterial(const QVector<oxdNode> &nodes, const QList<oxdMaterial> &materials) override;

private:
    QVector<Scene::Node> sceneNodes(const QVector<oxdNode> &handles) const;

    Scene *m_scene;
};
