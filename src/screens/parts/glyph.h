#pragma once

#include <QtQml/qqmlregistration.h>
#include <QColor>
#include <QQuickPaintedItem>

namespace marlet {

/// A drawn symbol in one colour, sharp at every size: strokes on a field of 24 by 24. It says
/// nothing to a screen reader; whoever shows it has the word beside it or a name of its own. Where
/// rows begin at the right, a symbol that points along them is drawn the other way round.
class Glyph : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY changed)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY changed)
    Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY changed)  ///< width and height, logical px

public:
    explicit Glyph(QQuickItem* parent = nullptr);

    QString name() const { return name_; }
    void setName(const QString& name);
    QColor color() const { return color_; }
    void setColor(const QColor& color);
    qreal size() const { return size_; }
    void setSize(qreal size);
    void paint(QPainter* painter) override;

Q_SIGNALS:
    void changed();

private:
    QString name_;
    QColor color_ = Qt::black;
    qreal size_ = 0;
};

}  // namespace marlet
