#include "TNV_SampleBenchNative/WTNVWorkflow.h"

#include "project/TNVWorkflow.h"

WTNVWorkflow::WTNVWorkflow() : native(nullptr) {}

WTNVWorkflow::WTNVWorkflow(TNVWorkflow* workflow) : native(workflow) {}

WTNVWorkflow::WTNVWorkflow(const WTNVWorkflow& other) = default;

WTNVWorkflow& WTNVWorkflow::operator=(const WTNVWorkflow& other) = default;

WTNVWorkflow::~WTNVWorkflow() {
  native = nullptr;
}

TNVWorkflow* WTNVWorkflow::getNativeWorkflow() const {
  return native;
}

bool WTNVWorkflow::isValid() const {
  return native != nullptr;
}

std::string WTNVWorkflow::wGetName() const {
  return native->name;
}
