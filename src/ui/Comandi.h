#pragma once

#include <functional>

class QLineEdit;

// What a screen offers to the window's keyboard commands. A screen takes part by deriving from the ones it
// has: the window asks the screen on show, so it needs to know no screen by name.

// Ctrl+N: a new item of the section (a list from a file, a template, a campaign).
class ConNuovo {
public:
    virtual ~ConNuovo() = default;
    virtual void nuovo() = 0;
};

// Ctrl+F: the screen's search field, or none while it has nothing to search.
class ConRicerca {
public:
    virtual ~ConRicerca() = default;
    virtual QLineEdit* ricerca() const = 0;
};

class QAbstractItemView;

// The Delete key on a master list deletes its selected item, as the list's own "Elimina" does. Only while the
// list itself has the keyboard: in a field or the editor, Delete stays the text's.
void eliminaConCanc(QAbstractItemView* elenco, std::function<void()> elimina);
