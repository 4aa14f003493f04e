#pragma once

#include <QColor>
#include <QQuickPaintedItem>
#include <QtQml/qqml.h>

namespace ostrelle
{

// An agent's emoji on a round glassy disc that is as wide as the item. It is painted only when it
// changes, not whenever something moves around it. Main thread only.
class AgentDisc : public QQuickPaintedItem
{
    Q_OBJECT
    QML_ELEMENT
    // Above and below on the disc.
    Q_PROPERTY(QColor upperColor MEMBER m_upperColor NOTIFY looksChanged)
    Q_PROPERTY(QColor lowerColor MEMBER m_lowerColor NOTIFY looksChanged)
    Q_PROPERTY(QColor rimColor MEMBER m_rimColor NOTIFY looksChanged)
    Q_PROPERTY(qreal rimWidth MEMBER m_rimWidth NOTIFY looksChanged) // in pixels
    Q_PROPERTY(QString emoji MEMBER m_emoji NOTIFY looksChanged)
    Q_PROPERTY(QString emojiFont MEMBER m_emojiFont NOTIFY looksChanged)
    // For texts in an emoji's stead.
    Q_PROPERTY(QColor textColor MEMBER m_textColor NOTIFY looksChanged)

public:
    explicit AgentDisc(QQuickItem *parent = nullptr);

    void paint(QPainter *painter) override;

Q_SIGNALS:
    void looksChanged();

private:
    void paintDisc(QPainter *painter, const QRectF &place) const;
    void paintEmoji(QPainter *painter, const QRectF &place) const;

    QColor m_upperColor;
    QColor m_lowerColor;
    QColor m_rimColor;
    qreal m_rimWidth = 1;
    QString m_emoji;
    QString m_emojiFont;
    QColor m_textColor;
};

} // namespace ostrelle
