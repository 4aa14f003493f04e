#include "ui/AgentDisc.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>

namespace ostrelle
{

namespace
{

// Shares of the disc's width.
constexpr qreal emojiHeight = 0.36;
constexpr qreal emojiRoom = 0.86; // what is wider is drawn smaller

constexpr int smallestEmoji = 6; // pixels

} // namespace

AgentDisc::AgentDisc(QQuickItem *parent)
    : QQuickPaintedItem(parent)
{
    setAntialiasing(true);
    connect(this, &AgentDisc::looksChanged, this, [this] { update(); });
}

void AgentDisc::paint(QPainter *painter)
{
    paintDisc(painter, boundingRect());
    paintEmoji(painter, boundingRect());
}

void AgentDisc::paintDisc(QPainter *painter, const QRectF &place) const
{
    QLinearGradient glass(place.topLeft(), place.bottomLeft());
    glass.setColorAt(0, m_upperColor);
    glass.setColorAt(1, m_lowerColor);
    const qreal inset = m_rimWidth / 2; // a pen draws to both sides of its line
    painter->setBrush(glass);
    painter->setPen(QPen(m_rimColor, m_rimWidth));
    painter->drawEllipse(place.adjusted(inset, inset, -inset, -inset));
}

void AgentDisc::paintEmoji(QPainter *painter, const QRectF &place) const
{
    QFont font(m_emojiFont);
    font.setPixelSize(std::max(qRound(emojiHeight * place.width()), smallestEmoji));
    const qreal room = emojiRoom * place.width();
    const qreal needed = QFontMetricsF(font).horizontalAdvance(m_emoji);
    if (needed > room) {
        font.setPixelSize(
            std::max(static_cast<int>(font.pixelSize() * room / needed), smallestEmoji));
    }
    painter->setFont(font);
    painter->setPen(m_textColor);
    painter->drawText(place, Qt::AlignCenter | Qt::TextSingleLine, m_emoji);
}

} // namespace ostrelle

#include "moc_AgentDisc.cpp"
