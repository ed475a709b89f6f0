#pragma once

#include "canvas.h"

// Large pictures.
Picture paintBackground();
Picture paintCover();
Picture paintIcon();

// All other scenes, stills and frames, are anamorphic 16:9: painted with square pixels, 1024 x 576,
// they are saved with 720 x 576 wider ones. What a scene is about stands in the middle 768 columns,
// which count from 0; those left and right of them have more of what is around it.
constexpr int sceneWidth = 1024;
constexpr int sceneHeight = 576;
constexpr int sceneLeft = -128;
constexpr int sceneRight = sceneLeft + sceneWidth;
inline Picture emptyScene() {
    return {sceneWidth, sceneHeight, sceneLeft};
}

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
