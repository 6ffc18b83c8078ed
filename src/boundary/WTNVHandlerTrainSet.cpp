#include "TNV_SampleBenchNative/WTNVHandlerTrainSet.h"

#include "editing/TNVHandlerTrainSet.h"
#include "project/TNVTrainSet.h"
#include "project/TNVWorkflow.h"

WTNVHandlerTrainSet::WTNVHandlerTrainSet(TNVHandlerTrainSet* handler) : native(handler) {
  native->addObserver(this);
}

WTNVHandlerTrainSet::WTNVHandlerTrainSet(const WTNVHandlerTrainSet& other)
    : TNVHandlerTrainSetObserver(other), native(other.native) {
  native->addObserver(this);
}

WTNVHandlerTrainSet& WTNVHandlerTrainSet::operator=(const WTNVHandlerTrainSet& other) {
  native = other.native;
  trainSetChanged = other.trainSetChanged;
  commentUpdated = other.commentUpdated;
  useSpecialTestUpdated = other.useSpecialTestUpdated;
  projectOpened = other.projectOpened;
  projectClosed = other.projectClosed;
  projectSaved = other.projectSaved;
  imageLoaded = other.imageLoaded;
  removeChanged = other.removeChanged;
  workflowChanged = other.workflowChanged;
  return *this;
}

WTNVHandlerTrainSet::~WTNVHandlerTrainSet() {
  native->removeObserver(this);
}

unsigned int WTNVHandlerTrainSet::wGetTrainSetCount() const {
  return static_cast<unsigned int>(native->trainSets.size());
}

unsigned int WTNVHandlerTrainSet::wGetTrainSetCurIdx() const {
  return static_cast<unsigned int>(native->idxCur);
}

WTNVTrainSet WTNVHandlerTrainSet::wGetTrainSetCur() const {
  return WTNVTrainSet(native->trainSetCurrent());
}

WTNVTrainSet WTNVHandlerTrainSet::wSetTrainSetForward(unsigned int step) {
  return WTNVTrainSet(native->setTrainSetForward(step));
}

WTNVTrainSet WTNVHandlerTrainSet::wSetTrainSetBackward(unsigned int step) {
  return WTNVTrainSet(native->setTrainSetBackward(step));
}

void WTNVHandlerTrainSet::wSetComment(const std::string& comment) {
  TNVTrainSet* current = native->trainSetCurrent();
  if (!current || !current->setComment(comment)) return;
  native->notify(&TNVHandlerTrainSetObserver::onEventCommentUpdated);
}

std::string WTNVHandlerTrainSet::wGetComment() const {
  const TNVTrainSet* current = native->trainSetCurrent();
  return current ? current->comment : "";
}

void WTNVHandlerTrainSet::wSetUseSpecialTest(bool use) {
  TNVTrainSet* current = native->trainSetCurrent();
  if (!current) return;
  current->useSpecialTest = use;
  native->notify(&TNVHandlerTrainSetObserver::onEventUseSpecialTestUpdated);
}

bool WTNVHandlerTrainSet::wGetUseSpecialTest() const {
  const TNVTrainSet* current = native->trainSetCurrent();
  return current && current->useSpecialTest;
}

void WTNVHandlerTrainSet::wSetRemove(bool remove) {
  TNVTrainSet* current = native->trainSetCurrent();
  if (!current) return;
  current->remove = remove;
  native->notify(&TNVHandlerTrainSetObserver::onEventRemoveChanged);
}

bool WTNVHandlerTrainSet::wGetRemove() const {
  const TNVTrainSet* current = native->trainSetCurrent();
  return current && current->remove;
}

void WTNVHandlerTrainSet::wSetWorkflow(WTNVWorkflow workflow) {
  TNVTrainSet* current = native->trainSetCurrent();
  if (!current) return;
  current->workflow = workflow.isValid() ? workflow.getNativeWorkflow()->uniqueIdx : -1;
  native->notify(&TNVHandlerTrainSetObserver::onEventWorkflowChanged);
}

WTNVWorkflow WTNVHandlerTrainSet::wGetWorkflow(std::vector<WTNVWorkflow> workflows) const {
  const TNVTrainSet* current = native->trainSetCurrent();
  if (!current) return WTNVWorkflow();
  for (const WTNVWorkflow& workflow : workflows) {
    if (workflow.isValid() && workflow.getNativeWorkflow()->uniqueIdx == current->workflow)
      return workflow;
  }
  return WTNVWorkflow();
}

void WTNVHandlerTrainSet::setCBTrainSetChanged(void (*callback)()) {
  trainSetChanged.set(callback);
}
void WTNVHandlerTrainSet::setCBCommentUpdated(void (*callback)()) {
  commentUpdated.set(callback);
}
void WTNVHandlerTrainSet::setCBUseSpecialTestUpdated(void (*callback)()) {
  useSpecialTestUpdated.set(callback);
}
void WTNVHandlerTrainSet::setCBProjectOpened(void (*callback)()) {
  projectOpened.set(callback);
}
void WTNVHandlerTrainSet::setCBProjectClosed(void (*callback)()) {
  projectClosed.set(callback);
}
void WTNVHandlerTrainSet::setCBProjectSaved(void (*callback)()) {
  projectSaved.set(callback);
}
void WTNVHandlerTrainSet::setCBImageLoaded(void (*callback)()) {
  imageLoaded.set(callback);
}
void WTNVHandlerTrainSet::setCBRemoveChanged(void (*callback)()) {
  removeChanged.set(callback);
}
void WTNVHandlerTrainSet::setCBWorkflowChanged(void (*callback)()) {
  workflowChanged.set(callback);
}

void WTNVHandlerTrainSet::onEventTrainSetChanged() {
  trainSetChanged.call();
}
void WTNVHandlerTrainSet::onEventCommentUpdated() {
  commentUpdated.call();
}
void WTNVHandlerTrainSet::onEventUseSpecialTestUpdated() {
  useSpecialTestUpdated.call();
}
void WTNVHandlerTrainSet::onEventProjectOpened() {
  projectOpened.call();
}
void WTNVHandlerTrainSet::onEventProjectClosed() {
  projectClosed.call();
}
void WTNVHandlerTrainSet::onEventProjectSaved() {
  projectSaved.call();
}
void WTNVHandlerTrainSet::onEventImageLoaded() {
  imageLoaded.call();
}
void WTNVHandlerTrainSet::onEventRemoveChanged() {
  removeChanged.call();
}
void WTNVHandlerTrainSet::onEventWorkflowChanged() {
  workflowChanged.call();
}
