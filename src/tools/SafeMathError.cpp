#include "tools/SafeMathError.h"

using namespace Qt::StringLiterals;

namespace morvane {

QString SafeMathError::errorDescription() const
{
    switch (kind) {
    case Kind::invalidToken:
        return u"unexpected character \""_s + token + u'"';
    case Kind::malformed:
        return u"the expression could not be parsed"_s;
    case Kind::divisionByZero:
        return u"division by zero"_s;
    case Kind::overflow:
        return u"the result is too large or not a number"_s;
    }
    return {};
}

} // namespace morvane
