#pragma once

class QWidget;

namespace OrdineTab {

// Keeps `vista` right after `prima` in the order Tab follows. A web view makes the widget that takes its
// keyboard focus only when its page loads, and a widget made late goes last in that order, after the buttons
// below the page; this puts it back each time the view makes one.
void subitoDopo(QWidget* prima, QWidget* vista);

} // namespace OrdineTab
