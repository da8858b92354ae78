#pragma once

#include "editor/EditStep.h"

#include <utility>
#include <vector>

namespace cantorel {

// What undo and redo go back to. A value of one thread.
class EditHistory {
public:
    bool canUndo() const { return !mUndo.empty(); }
    bool canRedo() const { return !mRedo.empty(); }

    // Something is about to change. what: changes of it one after the other are one step; null: a step of its own.
    void remember(EditStep now, const void *what) {
        if (!what || what != mChanged) {
            mUndo.push_back(std::move(now));
            mRedo.clear();
        }
        mChanged = what;
    }
    void endChange() { mChanged = nullptr; }

    // Where it goes from what is now.
    EditStep undo(EditStep now) { return go(mUndo, mRedo, std::move(now)); }
    EditStep redo(EditStep now) { return go(mRedo, mUndo, std::move(now)); }

private:
    EditStep go(std::vector<EditStep> &from, std::vector<EditStep> &to, EditStep now) {
        EditStep step = std::move(from.back());
        from.pop_back();
        to.push_back(std::move(now));
        mChanged = nullptr;
        return step;
    }

    std::vector<EditStep> mUndo, mRedo;
    const void *mChanged = nullptr;
};

} // namespace cantorel
