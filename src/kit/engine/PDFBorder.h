#pragma once

// The border of an annotation: style (0 solid, 1 dashed), line width and dash pattern. A border
// installed on an annotation reports in-place edits to it as "border.lineWidth", "border.style"
// and "border.dashPattern", and they reach the file. Main thread only.

#include <QList>
#include <QMetaType>
#include <QVariant>

#include <memory>

class PDFAnnotation;

class PDFBorder
{
public:
    enum Style { Solid = 0, Dashed = 1 };

    // The platform's defaults: solid, width 1, no dash pattern.
    PDFBorder() = default;
    PDFBorder(const PDFBorder &) = delete;
    PDFBorder &operator=(const PDFBorder &) = delete;

    int style() const { return m_style; }
    void setStyle(int style);
    double lineWidth() const { return m_lineWidth; }
    void setLineWidth(double width);
    // Dash and gap lengths in page units; empty means the default dash.
    QList<double> dashPattern() const { return m_dashPattern; }
    void setDashPattern(const QList<double> &pattern);

    // The dash pattern as a key value (a QVariantList of double) and back.
    static QVariant dashPatternValue(const QList<double> &pattern);
    static QList<double> dashPatternFromValue(const QVariant &value);

    // A new border with the same values, owned by no annotation.
    std::shared_ptr<PDFBorder> copy() const;

    // The annotation this border is installed on, if any.
    PDFAnnotation *owner() const { return m_owner; }

private:
    friend class PDFAnnotation;
    int m_style = Solid;
    double m_lineWidth = 1.0;
    QList<double> m_dashPattern;
    PDFAnnotation *m_owner = nullptr; // cleared when the annotation lets the border go
};

Q_DECLARE_METATYPE(std::shared_ptr<PDFBorder>)
