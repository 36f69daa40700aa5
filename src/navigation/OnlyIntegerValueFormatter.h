#pragma once

// Keeps a page field to decimal digits: a text is accepted while it is empty or made of the
// digits 0 to 9 only, typed or pasted; no upper bound is checked while typing.

#include <QValidator>

class OnlyIntegerValueFormatter : public QValidator
{
    Q_OBJECT

public:
    using QValidator::QValidator;

    State validate(QString &input, int &pos) const override;
    static bool isPartialStringValid(const QString &text);
};
