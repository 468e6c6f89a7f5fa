#include "Renderer.h"

#include <QOpenGLFramebufferObjectFormat>

#include <algorithm>
#include <cstddef>
#include <limits>
#include <tuple>

namespace {

// Rows are read from the bottom, and a QImage begins at the top: so everything is rendered upside
// down. And a QImage has blue where OpenGL has red: so colours are rendered the other way round,
// which OpenGL ES can't do when it reads the pixels.

const char backgroundVertexShader[] = R"(
attribute vec2 corner;
varying mediump float height;
void main()
{
    height = 0.5 - 0.5 * corner.y;
    gl_Position = vec4(corner, 1.0, 1.0);
}
)";

const char backgroundFragmentShader[] = R"(
varying mediump float height;
void main()
{
    mediump vec3 color = mix(vec3(0.235, 0.270, 0.310), vec3(0.100, 0.125, 0.160), height);
    gl_FragColor = vec4(color.bgr, 1.0);
}
)";

const char surfaceVertexShader[] = R"(
attribute vec3 position;
attribute vec3 normal;
uniform mat4 model;
uniform mat4 viewAndProjection;
uniform mat3 normalMatrix;
varying highp vec3 place;
varying mediump vec3 direction;
void main()
{
    vec4 world = model * vec4(position, 1.0);
    place = world.xyz;
    direction = normalMatrix * normal;
    gl_Position = viewAndProjection * world;
}
)";

// A key light from the upper right, the sky above, the floor below, and a highlight as wide as the
// material is matt. Metal shows the sky's colours in its own.
const char surfaceFragmentShader[] = R"(
varying highp vec3 place;
varying mediump vec3 direction;
uniform highp vec3 eye;
uniform mediump vec3 color;
uniform mediump float gloss;
uniform mediump float metal;
void main()
{
    highp vec3 toEye = normalize(eye - place);
    highp vec3 n = normalize(direction);
    if (dot(n, toEye) < 0.0)
        n = -n;
    const highp vec3 toLight = vec3(0.45, 0.78, 0.43);
    highp float lit = max(dot(n, toLight), 0.0);
    highp vec3 ambient = mix(vec3(0.16, 0.15, 0.15), vec3(0.36, 0.40, 0.46), 0.5 + 0.5 * n.y);
    highp vec3 mirrored = reflect(-toEye, n);
    highp float exponent = exp2(2.0 + 7.0 * gloss);
    highp float highlight = pow(max(dot(mirrored, toLight), 0.0), exponent) * (0.15 + 0.85 * gloss);
    highp float rim = pow(1.0 - max(dot(n, toEye), 0.0), 4.0);
    highp vec3 sky = mix(vec3(0.20, 0.20, 0.21), vec3(0.80, 0.88, 1.0), smoothstep(-0.2, 0.7, mirrored.y));
    highp vec3 tint = mix(vec3(1.0), color, metal);
    highp vec3 result = color * (ambient + vec3(0.85, 0.82, 0.78) * lit) * (1.0 - 0.45 * metal)
        + tint * sky * (gloss * (0.06 + 0.50 * metal) + 0.30 * gloss * rim)
        + mix(vec3(1.0), tint, 0.5) * highlight;
    gl_FragColor = vec4(result.bgr, 1.0);
}
)";

// The floor fades into the background; what stands in its middle casts a soft shadow.
const char floorFragmentShader[] = R"(
varying highp vec3 place;
uniform highp vec3 eye;
uniform mediump vec3 color;
uniform mediump float gloss;
void main()
{
    highp float away = length(place.xz);
    highp float shadow = 1.0 - 0.75 * (1.0 - smoothstep(0.55, 1.7, away));
    highp vec2 cell = abs(fract(place.xz * 1.6 + 0.5) - 0.5);
    highp float lines = 1.0 - 0.16 * (1.0 - smoothstep(0.0, 0.03, min(cell.x, cell.y)));
    highp vec3 toEye = normalize(eye - place);
    highp vec3 mirrored = reflect(-toEye, vec3(0.0, 1.0, 0.0));
    highp float highlight = pow(max(dot(mirrored, vec3(0.45, 0.78, 0.43)), 0.0), exp2(2.0 + 5.0 * gloss)) * 0.5 * gloss;
    highp float fading = smoothstep(1.5, 6.5, away);
    gl_FragColor = vec4((color * lines * shadow + vec3(highlight)).bgr, 1.0 - fading);
}
)";

constexpr int samples = 4;

constexpr int cornerAttribute = 0;
constexpr int positionAttribute = 0;
constexpr int normalAttribute = 1;

bool build(QOpenGLShaderProgram *program, const char *vertexShader, const char *fragmentShader)
{
    program->bindAttributeLocation("corner", cornerAttribute);
    program->bindAttributeLocation("position", positionAttribute);
    program->bindAttributeLocation("normal", normalAttribute);
    return program->addShaderFromSourceCode(QOpenGLShader::Vertex, vertexShader)
        && program->addShaderFromSourceCode(QOpenGLShader::Fragment, fragmentShader) && program->link();
}

QVector3D components(const QColor &color)
{
    return {float(color.redF()), float(color.greenF()), float(color.blueF())};
}

float metalPart(const QByteArray &type)
{
    return type == "oxdMetallicPaintMaterial" || type == "oxdChromeMaterial" || type == "oxdBrushedMetalMaterial" ? 1
                                                                                                                  : 0;
}

qint64 vertexBytes(const Mesh &mesh)
{
    return static_cast<qint64>(mesh.vertices.size()) * static_cast<qint64>(sizeof(Mesh::Vertex));
}

qint64 indexBytes(const Mesh &mesh)
{
    return static_cast<qint64>(mesh.indices.size()) * static_cast<qint64>(sizeof(quint32));
}

// Takes bytes that lie from `offset` on in a sequence of buffers, of which `buffer` begins at `start`.
qint64 copyPart(QOpenGLBuffer *buffer, const void *data, qint64 size, qint64 offset, qint64 bytes)
{
    const qint64 part = std::min(bytes, size - offset);
    if (part <= 0)
        return 0;
    if (!buffer->isCreated()) {
        buffer->create();
        buffer->bind();
        buffer->allocate(static_cast<int>(size));
    } else {
        buffer->bind();
    }
    buffer->write(static_cast<int>(offset), static_cast<const char *>(data) + offset, static_cast<int>(part));
    buffer->release();
    return part;
}

} // namespace

Renderer::Renderer() = default;

Renderer::~Renderer()
{
    if (!m_context.isValid())
        return;
    // Buffers and targets go while their context is there.
    m_context.makeCurrent(&m_surface);
    m_buffers.clear();
    m_target.reset();
    m_resolved.reset();
    m_background.removeAllShaders();
    m_surfaces.removeAllShaders();
    m_floor.removeAllShaders();
}

bool Renderer::initialize()
{
    if (!m_context.create()) {
        m_error = QStringLiteral("there is no OpenGL");
        return false;
    }
    m_surface.setFormat(m_context.format());
    m_surface.create();
    if (!m_surface.isValid() || !m_context.makeCurrent(&m_surface)) {
        m_error = QStringLiteral("OpenGL does not start");
        return false;
    }
    if (!QOpenGLFramebufferObject::hasOpenGLFramebufferObjects()) {
        m_error = QStringLiteral("OpenGL does not render off screen");
        return false;
    }
    for (const auto &[program, vertexShader, fragmentShader] :
         {std::tuple(&m_background, backgroundVertexShader, backgroundFragmentShader),
          std::tuple(&m_surfaces, surfaceVertexShader, surfaceFragmentShader),
          std::tuple(&m_floor, surfaceVertexShader, floorFragmentShader)}) {
        if (!build(program, vertexShader, fragmentShader)) {
            m_error = program->log().trimmed();
            return false;
        }
    }
    m_gl = m_context.functions();
    return true;
}

QString Renderer::errorString() const
{
    return m_error;
}

qint64 Renderer::uploadSome(const MeshPointer &mesh, qint64 bytes)
{
    Buffers &buffers = m_buffers[mesh];
    const qint64 vertices = vertexBytes(*mesh);
    const qint64 part = buffers.uploaded < vertices
        ? copyPart(&buffers.vertices, mesh->vertices.data(), vertices, buffers.uploaded, bytes)
        : copyPart(&buffers.indices, mesh->indices.data(), indexBytes(*mesh), buffers.uploaded - vertices, bytes);
    buffers.uploaded += part;
    return part;
}

void Renderer::uploadAll(const Scene &scene)
{
    for (auto it = m_buffers.begin(); it != m_buffers.end();) {
        const bool isInScene = std::any_of(scene.nodes().cbegin(), scene.nodes().cend(),
                                           [&it](const Scene::Node &node) { return node.mesh == it->first; });
        it = isInScene ? std::next(it) : m_buffers.erase(it);
    }
    for (const Scene::Node &node : scene.nodes()) {
        while (uploadSome(node.mesh, std::numeric_limits<int>::max()) > 0) {}
    }
}

bool Renderer::render(const Scene &scene, const QSize &size, Quality quality, uchar *pixels)
{
    if (!prepareTarget(size))
        return false;
    const bool isSmooth = quality == Smooth && m_target;
    QOpenGLFramebufferObject *target = isSmooth ? m_target.get() : m_resolved.get();
    target->bind();
    m_gl->glViewport(0, 0, size.width(), size.height());
    m_gl->glClear(GL_DEPTH_BUFFER_BIT);
    drawBackground();

    const Camera &camera = scene.camera();
    QMatrix4x4 upsideDown;
    upsideDown.scale(1, -1);
    const QMatrix4x4 viewAndProjection =
        upsideDown * camera.projectionMatrix(double(size.width()) / size.height()) * camera.viewMatrix();
    // The floor last, as it lets the background through.
    for (const bool floor : {false, true}) {
        for (const Scene::Node &node : scene.nodes()) {
            const auto buffers = m_buffers.find(node.mesh);
            const bool isThere = buffers != m_buffers.end()
                && buffers->second.uploaded == vertexBytes(*node.mesh) + indexBytes(*node.mesh);
            if (node.isVisible && node.isFloor == floor && isThere)
                drawNode(scene, node, &buffers->second, viewAndProjection);
        }
    }

    if (isSmooth)
        QOpenGLFramebufferObject::blitFramebuffer(m_resolved.get(), m_target.get());
    m_resolved->bind();
    m_gl->glReadPixels(0, 0, size.width(), size.height(), GL_RGBA, GL_UNSIGNED_BYTE, pixels);
    m_resolved->release();
    return true;
}

bool Renderer::prepareTarget(const QSize &size)
{
    if (m_resolved && m_resolved->size() == size)
        return true;
    QOpenGLFramebufferObjectFormat format;
    format.setAttachment(QOpenGLFramebufferObject::Depth);
    format.setSamples(samples);
    m_target.reset();
    m_resolved.reset();
    if (QOpenGLFramebufferObject::hasOpenGLFramebufferBlit() && samples > 0) {
        m_target = std::make_unique<QOpenGLFramebufferObject>(size, format);
        if (!m_target->isValid() || m_target->format().samples() == 0)
            m_target.reset();
    }
    format.setSamples(0);
    m_resolved = std::make_unique<QOpenGLFramebufferObject>(size, format);
    if (!m_resolved->isValid())
        m_resolved.reset();
    return m_resolved != nullptr;
}

void Renderer::drawBackground()
{
    static const float corners[] = {-1, -1, 3, -1, -1, 3}; // one triangle covers all
    m_gl->glDisable(GL_DEPTH_TEST);
    m_gl->glDisable(GL_BLEND);
    m_background.bind();
    m_background.enableAttributeArray(cornerAttribute);
    m_background.setAttributeArray(cornerAttribute, corners, 2);
    m_gl->glDrawArrays(GL_TRIANGLES, 0, 3);
    m_background.disableAttributeArray(cornerAttribute);
    m_gl->glEnable(GL_DEPTH_TEST);
}

void Renderer::drawNode(const Scene &scene, const Scene::Node &node, Buffers *buffers,
                        const QMatrix4x4 &viewAndProjection)
{
    static const Scene::Material plain;
    const Scene::Material *found = scene.material(node.material);
    const Scene::Material &material = found ? *found : plain;
    QMatrix4x4 model;
    if (!node.isFloor)
        model.rotate(static_cast<float>(scene.turnAngle()), 0, 1, 0);
    model *= node.transform;

    QOpenGLShaderProgram *program = node.isFloor ? &m_floor : &m_surfaces;
    program->bind();
    program->setUniformValue("model", model);
    program->setUniformValue("viewAndProjection", viewAndProjection);
    program->setUniformValue("normalMatrix", model.normalMatrix());
    program->setUniformValue("eye", scene.camera().eye());
    program->setUniformValue("color", components(material.color));
    program->setUniformValue("gloss", static_cast<float>(material.gloss));
    program->setUniformValue("metal", metalPart(material.type));

    m_gl->glBlendFuncSeparate(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA, GL_ZERO, GL_ONE);
    if (node.isFloor)
        m_gl->glEnable(GL_BLEND);
    buffers->vertices.bind();
    program->enableAttributeArray(positionAttribute);
    program->enableAttributeArray(normalAttribute);
    program->setAttributeBuffer(positionAttribute, GL_FLOAT, offsetof(Mesh::Vertex, position), 3, sizeof(Mesh::Vertex));
    program->setAttributeBuffer(normalAttribute, GL_FLOAT, offsetof(Mesh::Vertex, normal), 3, sizeof(Mesh::Vertex));
    buffers->vertices.release();
    buffers->indices.bind();
    m_gl->glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(node.mesh->indices.size()), GL_UNSIGNED_INT, nullptr);
    buffers->indices.release();
    program->disableAttributeArray(positionAttribute);
    program->disableAttributeArray(normalAttribute);
    m_gl->glDisable(GL_BLEND);
}
