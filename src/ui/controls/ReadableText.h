#pragma once

#include <QString>

namespace morvane {

/// A text from outside with a mark in the place of each character at which assistive technology would take it
/// for ended, or that would show what follows in another order. Line feeds and tabs stay. Any thread.
QString readableText(QString text);

} // namespace morvane
