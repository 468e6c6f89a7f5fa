#pragma once

#include <QByteArray>
#include <QColor>
#include <QMatrix4x4>
#include <QObject>
#include <QString>
#include <QUndoStack>
#include <QVector>

#include "Camera.h"
#include "Mesh.h"

/// What is rendered: nodes with their materials, seen by cameras, on a turntable. And the changes of
/// it that can be undone.
///
/// Everything in it has an id, by which other processes know it. An id is never used again.
class Scene : public QObject
{
    Q_OBJECT

public:
    using Id = unsigned long long;

    struct Material
    {
        Id id = 0;
        QByteArray type; // its data-object class
        QString name;
        QColor color;
        double gloss = 0.5; // 0..1
    };
    struct Node
    {
        Id id = 0;
        QString name;
        Id material = 0;
        MeshPointer mesh;
        QMatrix4x4 transform;
        bool isVisible = true;
        bool isFloor = false; // which does not turn and fades out
    };
    struct NamedCamera
    {
        Id id;
        QString name;
        Camera camera;
    };

    /// What a file holds. The material of a node is its index here.
    struct Model
    {
        QVector<Material> materials;
        QVector<Node> nodes;
    };

    explicit Scene(QObject *parent = nullptr);

    /// Puts the first scene, or that model on the floor, in place of all nodes and materials. What
    /// was done before cannot be undone any more.
    void clear();
    void show(const Model &model);
    /// A transform that puts a model of any size into the middle of the floor.
    static QMatrix4x4 fitting(const Model &model);

    const QVector<Material> &materials() const { return m_materials; }
    const QVector<Node> &nodes() const { return m_nodes; }
    /// Null where there is none of that id.
    const Material *material(Id id) const;
    const Node *node(Id id) const;

    /// Puts these in place of those with their ids. push() one of the commands for a change that can
    /// be undone.
    void replace(const QVector<Material> &materials);
    void replace(const QVector<Node> &nodes);

    /// Makes changes that the user can undo. Nothing is done, nor to be undone, for an empty list.
    void change(const QVector<Material> &materials, const QString &text);
    void change(const QVector<Node> &nodes, const QString &text);
    QUndoStack *undoStack() { return &m_undoStack; }

    const QVector<NamedCamera> &cameras() const { return m_cameras; }
    int activeCamera() const { return m_activeCamera; }
    void setActiveCamera(int index);
    const Camera &camera() const { return m_cameras.at(m_activeCamera).camera; }
    void setView(double azimuth, double elevation, double distance);
    void orbit(double azimuth, double elevation);
    void zoom(double factor);
    void resetCamera();

    bool isTurning() const { return m_isTurning; }
    void setTurning(bool on);
    /// Where the turntable is, in degrees.
    double turnAngle() const { return m_turnAngle; }
    /// Turns it, if it is turning, for the time since the last call. The first call after a rest turns nothing.
    /// @param seconds the time since any fixed moment; it never decreases
    void advanceTo(double seconds);

Q_SIGNALS:
    void materialsChanged();
    void nodesChanged();
    void cameraChanged();

private:
    Id newId() { return ++m_lastId; }
    Id addMaterial(Material material);
    void addNode(Node node);
    void addFloor();
    template<class T>
    void replaceIn(QVector<T> *all, const QVector<T> &some);

    Id m_lastId = 0;
    QVector<Material> m_materials;
    QVector<Node> m_nodes;
    QVector<NamedCamera> m_cameras;
    int m_activeCamera = 0;
    bool m_isTurning = true;
    bool m_wasTurning = false; // at m_time
    double m_time = 0;         // of the last advanceTo()
    double m_turnAngle = 0;
    QUndoStack m_undoStack;
};
