#include "ui/AgentCanvas.h"

#include <algorithm>

namespace ostrelle
{

using namespace Qt::StringLiterals;

namespace
{

// The canvas is designed at this width and grows by no more than a fifth.
constexpr qreal designWidth = 380;
constexpr qreal maxScale = 1.2;

// How far above and below the visible part there are nodes too; at least as far as the one to which
// the keyboard goes next.
constexpr qreal reach = 200;

using Side = AgentCanvasNode::Side;

AgentCanvasNode placeMain(const AgentNode &node, qreal width)
{
    const qreal scale = canvasScale(width);
    return {node, QPointF(0.5 * width, 80 * scale), 42 * scale, Side::Main};
}

AgentCanvasNode placeChild(const AgentNode &node, qsizetype index, qreal width)
{
    const qreal scale = canvasScale(width);
    const bool isLeft = index % 2 == 0;
    const qsizetype row = index / 2;
    const qreal y = 180 * scale + 96 * scale * static_cast<qreal>(row) + (isLeft ? 0 : 24 * scale);
    return {node, QPointF((isLeft ? 0.24 : 0.76) * width, y), 32 * scale,
            isLeft ? Side::Left : Side::Right};
}

QList<RecordListModel<AgentCanvasNode>::Role> canvasRoles()
{
    using Node = AgentCanvasNode;
    return {
        {"node", [](const Node &item) { return QVariant::fromValue(item.node); }},
        {"center", [](const Node &item) { return item.center; }},
        {"radius", [](const Node &item) { return item.radius; }},
        {"side", [](const Node &item) { return static_cast<int>(item.side); }},
    };
}

QStringList colorsOfWorking(const QList<AgentCanvasNode> &nodes)
{
    QStringList colors;
    for (const AgentCanvasNode &item : nodes) {
        if (item.node.isWorking()) {
            colors.append(item.node.nameOfColor());
        }
    }
    return colors;
}

} // namespace

qreal canvasScale(qreal width)
{
    return std::min(width / designWidth, maxScale);
}

QList<AgentCanvasNode> makeCanvasNodes(const QList<AgentNode> &nodes, QSizeF size)
{
    QList<AgentCanvasNode> placed;
    placed.reserve(nodes.size());
    qsizetype children = 0;
    for (const AgentNode &node : nodes) {
        placed.append(node.isMain() ? placeMain(node, size.width())
                                    : placeChild(node, children++, size.width()));
    }
    return placed;
}

qreal layoutHeight(qsizetype children)
{
    return children == 0 ? 200 : static_cast<qreal>(std::max<qsizetype>(100 * children + 180, 300));
}

AgentCanvas::AgentCanvas(QObject *parent)
    : QObject(parent)
    , m_nodeList(canvasRoles())
{
}

void AgentCanvas::setViewModel(AgentsTopologyViewModel *viewModel)
{
    if (m_viewModel == viewModel) {
        return;
    }
    if (m_viewModel) {
        m_viewModel->disconnect(this);
    }
    m_viewModel = viewModel;
    if (viewModel) {
        connect(viewModel, &AgentsTopologyViewModel::nodesChanged, this, &AgentCanvas::layOut);
    }
    layOut();
    Q_EMIT viewModelChanged();
}

void AgentCanvas::setWidth(qreal width)
{
    if (m_width == width) {
        return;
    }
    m_width = width;
    layOut();
    Q_EMIT widthChanged();
}

void AgentCanvas::setView(qreal top, qreal height)
{
    if (m_viewTop == top && m_viewHeight == height) {
        return;
    }
    m_viewTop = top;
    m_viewHeight = height;
    showNodes();
    Q_EMIT viewChanged();
}

void AgentCanvas::showNodes()
{
    const auto height = [](const AgentCanvasNode &item) { return item.center.y(); };
    const auto first = std::ranges::lower_bound(m_nodes, m_viewTop - reach, {}, height);
    const auto end = std::ranges::upper_bound(first, m_nodes.cend(),
                                              m_viewTop + m_viewHeight + reach, {}, height);
    m_nodeList.setRows(QList<AgentCanvasNode>(first, end));
}

void AgentCanvas::layOut()
{
    QList<AgentNode> nodes;
    if (m_viewModel && m_width > 0) {
        nodes = m_viewModel->childNodes();
        if (const auto mainNode = m_viewModel->mainNode()) {
            nodes.prepend(*mainNode);
        }
    }
    m_nodes = makeCanvasNodes(nodes, QSizeF(m_width, 0));
    showNodes();
    Q_EMIT nodesChanged();

    const QStringList colors = colorsOfWorking(m_nodes);
    if (m_activeAgentColors != colors) {
        m_activeAgentColors = colors;
        Q_EMIT spineColorsChanged();
    }
}

qreal AgentCanvas::layoutHeight() const
{
    return ostrelle::layoutHeight(m_viewModel ? m_viewModel->childNodes().size() : 0);
}

qreal AgentCanvas::spineTop() const
{
    const bool hasMain = !m_nodes.isEmpty() && m_nodes.first().side == Side::Main;
    return hasMain ? m_nodes.first().center.y() + m_nodes.first().radius : 0;
}

qreal AgentCanvas::spineBottom() const
{
    const bool hasChildren = !m_nodes.isEmpty() && m_nodes.last().side != Side::Main;
    return hasChildren ? m_nodes.last().center.y() + 1.5 * m_nodes.last().radius : layoutHeight();
}

QStringList AgentCanvas::spineColors() const
{
    QStringList colors = m_activeAgentColors;
    colors.removeDuplicates();
    return colors.isEmpty() ? QStringList{colorName(NamedColor::TiffanyBlue)} : colors;
}

} // namespace ostrelle

#include "moc_AgentCanvas.cpp"
