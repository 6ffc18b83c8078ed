#pragma once

/// Everything that a front end needs.
#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/TNVObserver.h"
#include "TNV_SampleBenchNative/WTNVAppConfig.h"
#include "TNV_SampleBenchNative/WTNVDNNClass.h"
#include "TNV_SampleBenchNative/WTNVGeneration.h"
#include "TNV_SampleBenchNative/WTNVGenerationDarknet.h"
#include "TNV_SampleBenchNative/WTNVHandlerAugment.h"
#include "TNV_SampleBenchNative/WTNVHandlerImageView.h"
#include "TNV_SampleBenchNative/WTNVHandlerMark.h"
#include "TNV_SampleBenchNative/WTNVHandlerTrainSet.h"
#include "TNV_SampleBenchNative/WTNVMainProcess.h"
#include "TNV_SampleBenchNative/WTNVMark.h"
#include "TNV_SampleBenchNative/WTNVProject.h"
#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "TNV_SampleBenchNative/WTNVUser.h"
#include "TNV_SampleBenchNative/WTNVWorkflow.h"
