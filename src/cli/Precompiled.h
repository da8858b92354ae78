#pragma once

// What most commands read. Each includes what it needs all the same.

#include "platform/foundation/Precompiled.h"

#include <QJsonArray>
#include <QJsonObject>

#include <CLI/CLI.hpp>
