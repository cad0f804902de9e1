#pragma once

class SettingsStore;
class Store;

// What every screen receives from the shell: the one settings store and the one store of the process.
struct Ambiente {
    SettingsStore& settings;
    Store& store;
};
