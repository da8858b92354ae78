#pragma once

// What most widgets read. Each includes what it needs all the same.

#include "platform/foundation/Precompiled.h"

#include <QBoxLayout>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QToolButton>
#include <QWidget>
