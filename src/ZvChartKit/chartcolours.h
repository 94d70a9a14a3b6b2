#pragma once

#include <QColor>

#include <array>
#include <cstddef>

namespace zvplot {

// What a line, a bar or a text is drawn for; which colour that is stands in one place.
enum class Ink {
    Ground,
    Grid,
    Frame, // between panes
    Strong, // text
    Dim, // text of axes
    Key, // yellow: names, the average line
    Up,
    Down,
    Price, // the time line
    Curve1,
    Curve2,
    Curve3,
    Curve4,
    Cross,
    Raised, // ground of boxes and axis labels
    Count
};

// Colours of all series. Red is up until turned around; then every series turns with it.
class ChartColours
{
public:
    ChartColours()
    {
        set(Ink::Ground, 0x16181c);
        set(Ink::Grid, 0x24282f);
        set(Ink::Frame, 0x363b45);
        set(Ink::Strong, 0xf0f1f3);
        set(Ink::Dim, 0x9aa1ac);
        set(Ink::Key, 0xffd23f);
        set(Ink::Price, 0xdfe6f2);
        set(Ink::Curve1, 0xf0f1f3);
        set(Ink::Curve2, 0xffd23f);
        set(Ink::Curve3, 0xd77bff);
        set(Ink::Curve4, 0x4fb3ff);
        set(Ink::Cross, 0x8b93a1);
        set(Ink::Raised, 0x2a2e36);
        setRedUp(true);
    }

    bool isRedUp() const { return m_isRedUp; }
    void setRedUp(bool isRedUp)
    {
        m_isRedUp = isRedUp;
        set(Ink::Up, isRedUp ? red : green);
        set(Ink::Down, isRedUp ? green : red);
    }

    QRgb operator[](Ink ink) const { return m_colours[static_cast<std::size_t>(ink)]; }

    // The ink of a figure that stands above, below or at what it is compared with.
    static Ink inkOf(double difference)
    {
        return difference > 0 ? Ink::Up : difference < 0 ? Ink::Down : Ink::Strong;
    }

private:
    static constexpr QRgb red = 0xea3835;
    static constexpr QRgb green = 0x4bff57;

    void set(Ink ink, QRgb colour)
    {
        m_colours[static_cast<std::size_t>(ink)] = 0xff000000u | colour;
    }

    std::array<QRgb, static_cast<std::size_t>(Ink::Count)> m_colours{};
    bool m_isRedUp = true;
};

} // namespace zvplot
