#pragma once

#include <functional>

// The end order of the kit. Singletons end when the application object is destroyed, whether or
// not its event loop ever ran or said aboutToQuit: first those that ask and act, then the link
// with its transport and its thread, last the cache, which all others write to.
enum class ZvKitEnd { Actions, Engine, Access, Cache };

// Calls `end` once when the application object is destroyed, in the order of ZvKitEnd.
void zvEndWithApplication(ZvKitEnd when, std::function<void()> end);

// Makes the instance of `T` at the first call. After the application's end the next call makes a
// new one, so that a late caller never holds a dead one.
template <typename T, ZvKitEnd End>
struct ZvKitSingleton {
    static T *get()
    {
        static T *instance = nullptr;
        if (!instance) {
            instance = new T;
            zvEndWithApplication(End, [] {
                T *const ended = instance;
                delete ended;
                instance = nullptr;
            });
        }
        return instance;
    }
};
