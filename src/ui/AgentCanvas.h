#pragma once

#include "dashboards/AgentsTopologyViewModel.h"
#include "dashboards/RecordListModel.h"

#include <QPointF>
#include <QPointer>
#include <QSizeF>
#include <QStringList>
#include <QtQml/qqml.h>

namespace ostrelle
{

// One agent in its place on the canvas. Lengths are in pixels.
struct AgentCanvasNode {
    enum class Side { Left = -1, Main = 0, Right = 1 };

    AgentNode node;
    QPointF center;
    qreal radius;
    Side side; // of the spine

    const QString &identity() const { return node.id; }

    friend bool operator==(const AgentCanvasNode &, const AgentCanvasNode &) = default;
};

// How much larger than designed everything is drawn on a canvas of this width.
qreal canvasScale(qreal width);

// The nodes in their places. The main node, where there is one, is at the head of the spine; the
// others follow in their order, left and right in turn. Of the size, only the width counts.
QList<AgentCanvasNode> makeCanvasNodes(const QList<AgentNode> &nodes, QSizeF size);

// The height of a canvas with that many agents beside the main one.
qreal layoutHeight(qsizetype children);

// The canvas of the agents' view. It keeps every agent in its place while the model and the width
// change, and shows those in and near the visible part. A node that a poll did not change is left
// alone. Main thread only.
class AgentCanvas : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ostrelle::AgentsTopologyViewModel *viewModel READ viewModel WRITE setViewModel NOTIFY
                   viewModelChanged)
    Q_PROPERTY(qreal width READ width WRITE setWidth NOTIFY widthChanged)
    // The part of the canvas that is seen.
    Q_PROPERTY(qreal viewTop READ viewTop WRITE setViewTop NOTIFY viewChanged)
    Q_PROPERTY(qreal viewHeight READ viewHeight WRITE setViewHeight NOTIFY viewChanged)
    // The nodes in that part and close to it, from top to bottom, the main one first; empty without
    // a model or a width. Roles: node, center, radius, side (-1 left of the spine, 0 on it, 1 right
    // of it).
    Q_PROPERTY(QAbstractItemModel *nodeList READ nodeList CONSTANT)
    Q_PROPERTY(qreal layoutHeight READ layoutHeight NOTIFY nodesChanged)
    // Where the spine begins, at the main node's rim, and ends.
    Q_PROPERTY(qreal spineTop READ spineTop NOTIFY nodesChanged)
    Q_PROPERTY(qreal spineBottom READ spineBottom NOTIFY nodesChanged)
    // The names of the working agents' colours, in the order of the agents.
    Q_PROPERTY(QStringList activeAgentColors READ activeAgentColors NOTIFY spineColorsChanged)
    // The colours of the spine from its head to its end: each active colour once, or the accent
    // when nobody works.
    Q_PROPERTY(QStringList spineColors READ spineColors NOTIFY spineColorsChanged)

public:
    explicit AgentCanvas(QObject *parent = nullptr);

    AgentsTopologyViewModel *viewModel() const { return m_viewModel; }
    void setViewModel(AgentsTopologyViewModel *viewModel);

    qreal width() const { return m_width; }
    void setWidth(qreal width);
    qreal viewTop() const { return m_viewTop; }
    void setViewTop(qreal top) { setView(top, m_viewHeight); }
    qreal viewHeight() const { return m_viewHeight; }
    void setViewHeight(qreal height) { setView(m_viewTop, height); }

    QAbstractItemModel *nodeList() { return &m_nodeList; }
    qreal layoutHeight() const;
    qreal spineTop() const;
    qreal spineBottom() const;
    const QStringList &activeAgentColors() const { return m_activeAgentColors; }
    QStringList spineColors() const;

Q_SIGNALS:
    void viewModelChanged();
    void widthChanged();
    void viewChanged();
    void nodesChanged();
    void spineColorsChanged();

private:
    void layOut();
    void setView(qreal top, qreal height);
    void showNodes();

    QPointer<AgentsTopologyViewModel> m_viewModel;
    qreal m_width = 0;
    qreal m_viewTop = 0;
    qreal m_viewHeight = 0;
    QList<AgentCanvasNode> m_nodes;
    RecordListModel<AgentCanvasNode> m_nodeList;
    QStringList m_activeAgentColors;
};

} // namespace ostrelle
