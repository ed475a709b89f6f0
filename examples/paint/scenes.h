#pragma once

#include "canvas.h"

// Large pictures.
Picture paintBackground();
Picture paintCover();
Picture paintIcon();

// Stills are painted with square pixels, 768 x 576.
constexpr int stillWidth = 768;
constexpr int stillHeight = 576;
Picture paintHarbour();
Picture paintForest();
Picture paintCity();
Picture paintDesert();
Picture paintSnow();

// Frames of a loop: t runs from 0 (first frame) towards 1, which is the first frame again.
Picture paintLighthouse(double t);
Picture paintSailing(double t);
Picture paintWheel(double t);
Picture paintTrain(double t);
