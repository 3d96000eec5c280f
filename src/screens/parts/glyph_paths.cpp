#include "screens/parts/glyph_paths.h"

#include <QHash>
#include <algorithm>
#include <array>

namespace marlet::GlyphPaths {

namespace {

// A drawing is a list of strokes: "M x y" begins one, "L x y" draws a line, "C x1 y1 x2 y2 x y" a
// curve, "O x y r" a circle, "R x y w h r" a rectangle with round corners, "Z" closes.
struct Drawing {
    const char* name;
    const char* strokes;
};

constexpr std::array drawings = {
    Drawing{"film",
            "R 3 4.5 18 15 2 M 7.5 4.5 L 7.5 19.5 M 16.5 4.5 L 16.5 19.5 M 3 9.5 L 7.5 9.5 "
            "M 3 14.5 L 7.5 14.5 M 16.5 9.5 L 21 9.5 M 16.5 14.5 L 21 14.5"},
    Drawing{"episode", "R 3 6.5 18 13 2 M 8 2.5 L 12 6.5 L 16 2.5"},
    Drawing{"review",
            "R 3.5 4 7 7 1.5 R 3.5 14 7 7 1.5 M 14 6 L 20.5 6 M 14 9.5 L 18.5 9.5 "
            "M 14 16 L 20.5 16 M 14 19.5 L 18.5 19.5"},
    Drawing{"queue",
            "M 4 6.5 L 20 6.5 M 4 12 L 13 12 M 4 17.5 L 11 17.5 M 16 12.5 L 21 16 L 16 19.5 Z"},
    Drawing{"history", "O 12 12 8.5 M 12 7 L 12 12 L 15.5 14.5"},
    Drawing{"plus", "M 12 5 L 12 19 M 5 12 L 19 12"},
    Drawing{"minus", "M 5 12 L 19 12"},
    Drawing{"sidebar", "R 3 4.5 18 15 2 M 15 4.5 L 15 19.5"},
    Drawing{"settings",
            "M 4 7 L 10.5 7 M 15.5 7 L 20 7 O 13 7 2.5 M 4 17 L 7 17 M 12 17 L 20 17 O 9.5 17 2.5"},
    Drawing{"search", "O 10.5 10.5 6 M 15 15 L 20.5 20.5"},
    Drawing{"check", "M 4.5 12.5 L 9.5 17.5 L 19.5 6.5"},
    Drawing{"triangle", "M 12 3.8 L 21.5 20 L 2.5 20 Z M 12 10 L 12 14.5 M 12 17.2 L 12 17.3"},
    Drawing{"info", "O 12 12 8.8 M 12 11 L 12 16.5 M 12 7.5 L 12 7.6"},
    Drawing{"cross", "M 6 6 L 18 18 M 18 6 L 6 18"},
    Drawing{"failed", "O 12 12 8.8 M 9 9 L 15 15 M 15 9 L 9 15"},
    Drawing{"lock", "R 5 10.5 14 10 2 M 8 10.5 L 8 7.5 C 8 2.2 16 2.2 16 7.5 L 16 10.5"},
    Drawing{"pause", "M 8.5 5 L 8.5 19 M 15.5 5 L 15.5 19"},
    Drawing{"play", "M 7.5 4.5 L 19 12 L 7.5 19.5 Z"},
    Drawing{"folder",
            "M 3 18.5 L 3 6.5 C 3 5.5 3.5 5 4.5 5 L 9.5 5 L 11.5 7.5 L 19.5 7.5 C 20.5 7.5 21 8 "
            "21 9 L 21 18 C 21 19 20.5 19.5 19.5 19.5 L 4.5 19.5 C 3.5 19.5 3 19.2 3 18.5 Z"},
    Drawing{"trash",
            "M 4 6.5 L 20 6.5 M 9 6.5 L 9 4 L 15 4 L 15 6.5 M 6 6.5 L 7 20 L 17 20 L 18 6.5 "
            "M 10 10.5 L 10 16 M 14 10.5 L 14 16"},
    Drawing{"undo", "M 8.5 4.5 L 4 9 L 8.5 13.5 M 4 9 L 14 9 C 22 9 22 19.5 14 19.5 L 9 19.5"},
    Drawing{"chevronDown", "M 6 9.5 L 12 15.5 L 18 9.5"},
    Drawing{"chevronUp", "M 6 14.5 L 12 8.5 L 18 14.5"},
    Drawing{"chevronRight", "M 9.5 6 L 15.5 12 L 9.5 18"},
    Drawing{"chevronLeft", "M 14.5 6 L 8.5 12 L 14.5 18"},
    Drawing{"image",
            "R 3 4.5 18 15 2 O 8.5 9.5 1.6 M 3.5 17.5 L 9.5 12.5 L 13 15.5 L 16.5 12 L 20.5 16"},
    Drawing{"refresh",
            "M 20 5 L 20 10 L 15 10 M 20 10 C 17.5 2.5 6 2.5 4.2 11 M 4 19 L 4 14 L 9 14 "
            "M 4 14 C 6.5 21.5 18 21.5 19.8 13"},
    Drawing{"export",
            "M 12 15 L 12 3.5 M 7.5 8 L 12 3.5 L 16.5 8 M 4.5 14 L 4.5 20 L 19.5 20 L 19.5 14"},
    Drawing{"dots", "O 5.5 12 0.9 O 12 12 0.9 O 18.5 12 0.9"},
    Drawing{"drag", "M 5 9 L 19 9 M 5 15 L 19 15"},
    Drawing{"external",
            "M 13.5 4 L 20 4 L 20 10.5 M 20 4 L 11 13 M 16 13.5 L 16 20 L 4 20 L 4 8 L 10.5 8"},
    Drawing{"link",
            "M 10 14 L 14 10 M 8.5 11 L 5.5 14 C 2 17.5 6.5 22 10 18.5 L 13 15.5 M 15.5 13 L 18.5 "
            "10 C 22 6.5 17.5 2 14 5.5 L 11 8.5"},
    Drawing{"sound",
            "M 4 9.5 L 4 14.5 L 7.5 14.5 L 12 18.5 L 12 5.5 L 7.5 9.5 Z M 15.5 9 C 17.2 10.8 17.2 "
            "13.2 15.5 15 M 18 6.5 C 21.2 9.5 21.2 14.5 18 17.5"},
    Drawing{"subtitle",
            "R 3 5 18 14 2 M 6.5 12 L 12 12 M 15 12 L 17.5 12 M 6.5 15.5 L 9 15.5 M 12 15.5 L 17.5 "
            "15.5"},
    Drawing{"compare",
            "R 3.5 5 7 14 1.5 R 13.5 5 7 14 1.5 M 5.5 9.5 L 8.5 9.5 M 15.5 9.5 L 18.5 9.5 M 15.5 "
            "13 L 18.5 13"},
    Drawing{"pencil",
            "M 4 20 L 5 15.5 L 16 4.5 C 17.5 3 21 6.5 19.5 8 L 8.5 19 Z M 14 6.5 L 17.5 10"},
};

QPainterPath draw(const QString& strokes) {
    QPainterPath path;
    const QStringList words = strokes.split(u' ', Qt::SkipEmptyParts);
    qsizetype at = 0;
    const auto number = [&] { return words[at++].toDouble(); };
    const auto point = [&] {
        const double x = number();
        return QPointF(x, number());
    };
    while (at < words.size()) {
        const QString command = words[at++];
        if (command == u'M') path.moveTo(point());
        if (command == u'L') path.lineTo(point());
        if (command == u'Z') path.closeSubpath();
        if (command == u'C') {
            const QPointF first = point();
            const QPointF second = point();
            path.cubicTo(first, second, point());
        }
        if (command == u'O') {
            const QPointF centre = point();
            const double radius = number();
            path.addEllipse(centre, radius, radius);
        }
        if (command == u'R') {
            const QPointF corner = point();
            const QPointF size = point();
            const double radius = number();
            path.addRoundedRect(QRectF(corner, QSizeF(size.x(), size.y())), radius, radius);
        }
    }
    return path;
}

const QHash<QString, QPainterPath>& all() {
    static const QHash<QString, QPainterPath> paths = [] {
        QHash<QString, QPainterPath> made;
        for (const Drawing& drawing : drawings)
            made.insert(QString::fromLatin1(drawing.name),
                        draw(QString::fromLatin1(drawing.strokes)));
        return made;
    }();
    return paths;
}

/// Those that point along a row, or show rows themselves. A triangle that plays points along time,
/// which runs the same way everywhere.
constexpr std::array onward = {"chevronLeft", "chevronRight", "undo",    "external",
                               "queue",       "review",       "sidebar", "subtitle"};

}  // namespace

bool pointsOnward(const QString& name) {
    return std::ranges::any_of(onward,
                               [&](const char* each) { return name == QLatin1String(each); });
}

QPainterPath find(const QString& name) {
    return all().value(name);
}

QStringList names() {
    return all().keys();
}

}  // namespace marlet::GlyphPaths
