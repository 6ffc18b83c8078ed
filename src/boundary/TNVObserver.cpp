#include "TNV_SampleBenchNative/TNVObserver.h"

TNVObserver::~TNVObserver() = default;

// Empty bodies: an observer overrides only what it wants to hear of.

void TNVHandlerAugmentObserver::onEventGenerationStarted() {}
void TNVHandlerAugmentObserver::onEventGenerationUpdate() {}
void TNVHandlerAugmentObserver::onEventGenerationFinished() {}

void TNVHandlerDownloadObserver::onEventDownloadStarted() {}
void TNVHandlerDownloadObserver::onEventDownloadUpdate() {}
void TNVHandlerDownloadObserver::onEventDownloadFinished() {}

void TNVHandlerValidationObserver::onEventValidGenStarted() {}
void TNVHandlerValidationObserver::onEventValidGenUpdate() {}
void TNVHandlerValidationObserver::onEventValidGenFinished() {}

void TNVHandlerImageViewObserver::onEventCrossPositionChanged() {}
void TNVHandlerImageViewObserver::onEventHelperZoomLevelChanged() {}
void TNVHandlerImageViewObserver::onEventHelperModeChanged() {}
void TNVHandlerImageViewObserver::onEventHelperWndSizeChanged() {}
void TNVHandlerImageViewObserver::onEventHelperShowCrossChanged() {}
void TNVHandlerImageViewObserver::onEventMarkStyleChanged() {}
void TNVHandlerImageViewObserver::onEventMarkDrawInfoChanged() {}
void TNVHandlerImageViewObserver::onEventCrossStyleChanged() {}
void TNVHandlerImageViewObserver::onEventZoomLevelChanged() {}
void TNVHandlerImageViewObserver::onEventDrawMarkFilledChanged() {}
void TNVHandlerImageViewObserver::onEventDrawOnlyDNNsChanged() {}

void TNVHandlerTrainSetObserver::onEventTrainSetChanged() {}
void TNVHandlerTrainSetObserver::onEventCommentUpdated() {}
void TNVHandlerTrainSetObserver::onEventUseSpecialTestUpdated() {}
void TNVHandlerTrainSetObserver::onEventProjectOpened() {}
void TNVHandlerTrainSetObserver::onEventProjectClosed() {}
void TNVHandlerTrainSetObserver::onEventProjectSaved() {}
void TNVHandlerTrainSetObserver::onEventImageLoaded() {}
void TNVHandlerTrainSetObserver::onEventRemoveChanged() {}
void TNVHandlerTrainSetObserver::onEventWorkflowChanged() {}

void TNVHandlerMarkObserver::onEventMarkAdded() {}
void TNVHandlerMarkObserver::onEventMarkDesigned() {}
void TNVHandlerMarkObserver::onEventDNNClassChanged() {}
void TNVHandlerMarkObserver::onEventAddInstantlyChanged() {}
void TNVHandlerMarkObserver::onEventMarkFormChanged() {}
void TNVHandlerMarkObserver::onEventMarkModeChanged() {}
void TNVHandlerMarkObserver::onEventMarkMouseOver() {}
void TNVHandlerMarkObserver::onEventMarkStateHovered() {}
void TNVHandlerMarkObserver::onEventMarkStateSelected() {}
void TNVHandlerMarkObserver::onEventMarkStatePOIVisible() {}
void TNVHandlerMarkObserver::onEventMarkUpdated() {}
void TNVHandlerMarkObserver::onEventMarkRemoved() {}
void TNVHandlerMarkObserver::onEventPOIPointsUpdated() {}
void TNVHandlerMarkObserver::onEventPOISizeUpdated() {}
void TNVHandlerMarkObserver::onEventAssistChanged() {}
