#pragma once

#include <QMatrix4x4>
#include <QOffscreenSurface>
#include <QOpenGLBuffer>
#include <QOpenGLContext>
#include <QOpenGLFramebufferObject>
#include <QOpenGLFunctions>
#include <QOpenGLShaderProgram>
#include <QSize>

#include <map>
#include <memory>

#include "Scene.h"

/// Renders the scene off screen, with OpenGL 2.1 or OpenGL ES 2 and better.
///
/// Its context stays the current one of the thread, which is always the same.
class Renderer
{
public:
    /// Smooth edges cost several times as much where OpenGL is done by software.
    enum Quality { Draft, Smooth };

    Renderer();
    ~Renderer();

    /// Once, before the rest.
    /// @return false, and errorString() says why, where there is no OpenGL
    bool initialize();
    QString errorString() const;

    /// Takes some bytes of the mesh to the graphics card, on from where the last call for this mesh
    /// ended. What is not there yet is not rendered.
    /// @return the number of bytes, 0 when all are there
    qint64 uploadSome(const MeshPointer &mesh, qint64 bytes);

    /// Takes all meshes of the scene there, and lets go of others.
    void uploadAll(const Scene &scene);

    /// Renders the scene into @p pixels: rows from the top, each pixel as in QImage::Format_RGB32.
    /// @return false where the graphics card has no memory for that size
    bool render(const Scene &scene, const QSize &size, Quality quality, uchar *pixels);

private:
    Q_DISABLE_COPY(Renderer)

    struct Buffers
    {
        QOpenGLBuffer vertices{QOpenGLBuffer::VertexBuffer};
        QOpenGLBuffer indices{QOpenGLBuffer::IndexBuffer};
        qint64 uploaded = 0;
    };

    bool prepareTarget(const QSize &size);
    void drawBackground();
    void drawNode(const Scene &scene, const Scene::Node &node, Buffers *buffers, const QMatrix4x4 &viewAndProjection);

    QString m_error;
    QOffscreenSurface m_surface;
    QOpenGLContext m_context;
    QOpenGLFunctions *m_gl = nullptr;
    QOpenGLShaderProgram m_background;
    QOpenGLShaderProgram m_surfaces;
    QOpenGLShaderProgram m_floor;
    std::unique_ptr<QOpenGLFramebufferObject> m_target;   // with several samples for a pixel
    std::unique_ptr<QOpenGLFramebufferObject> m_resolved; // with one
    std::map<MeshPointer, Buffers> m_buffers;
};
