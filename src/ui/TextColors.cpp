#include "ui/TextColors.h"

#include <cmath>

namespace ostrelle
{

namespace
{

constexpr double contrast = 4.5; // that WCAG asks of small texts
constexpr int steps = 20;        // from the colour itself to white

float between(float from, float to, double share)
{
    return static_cast<float>(from + share * (to - from));
}

QColor mixed(const QColor &from, const QColor &to, double share)
{
    return QColor::fromRgbF(between(from.redF(), to.redF(), share),
                            between(from.greenF(), to.greenF(), share),
                            between(from.blueF(), to.blueF(), share));
}

double linear(double part)
{
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

// How light the eye sees it, from 0 to 1, as WCAG reckons.
double luminance(const QColor &color)
{
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

} // namespace

QColor TextColors::legible(const QColor &color, const QColor &ground, qreal washOpacity)
{
    const QColor washed = mixed(ground, color, color.alphaF() * washOpacity);
    const double enough = contrast * (luminance(washed) + 0.05);
    for (int step = 0; step < steps; ++step) {
        QColor lighter = mixed(color, Qt::white, static_cast<double>(step) / steps);
        if (luminance(mixed(washed, lighter, color.alphaF())) + 0.05 >= enough) {
            lighter.setAlphaF(color.alphaF());
            return lighter;
        }
    }
    return Qt::white;
}

} // namespace ostrelle

#include "moc_TextColors.cpp"
