#pragma once

// The small images that several panels share: the "A" and "B" markers that tell which view of a
// split tab a panel follows, in an on and an off state, and an enabled and a disabled mark. They
// are drawn in the current theme's colours on first use and drawn anew after a theme change.
// Main thread only.

#include <QIcon>

#include <array>

class FDCommonImageProvider
{
public:
    // The one instance, made on first use.
    static FDCommonImageProvider &shared();

    FDCommonImageProvider(const FDCommonImageProvider &) = delete;
    FDCommonImageProvider &operator=(const FDCommonImageProvider &) = delete;

    // "A": the primary view.
    QIcon primaryIndicatorOnStateIcon();
    QIcon primaryIndicatorOffStateIcon();
    // "B": the secondary view.
    QIcon secondaryIndicatorOnStateIcon();
    QIcon secondaryIndicatorOffStateIcon();
    QIcon enabledMarkIcon();
    QIcon disabledMarkIcon();

    // The logical edge of every image.
    static constexpr int iconSize = 16;

private:
    enum Image {
        primaryOn,
        primaryOff,
        secondaryOn,
        secondaryOff,
        enabledMark,
        disabledMark,
        ImageCount
    };

    FDCommonImageProvider();
    QIcon image(Image which);
    void onThemeWillChange();

    std::array<QIcon, ImageCount> m_images;
};
