#pragma once

#include "ui/Ambiente.h"

#include <QWidget>

// The settings window of the Preferences command: the settings screen on its own, at a fixed width. It
// shares only the settings store and the store with the section of the main window.
class SettingsWindow : public QWidget {
    Q_OBJECT
public:
    static constexpr int larghezza = 560;

    explicit SettingsWindow(Ambiente ambiente, QWidget* genitore = nullptr);
};
