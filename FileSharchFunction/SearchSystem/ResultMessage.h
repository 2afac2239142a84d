#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Ref.h"

/// What a producer of results tells the engine: one candidate, or its own end.
struct ResultMessage {
  /// The full path of the candidate; null in an end message.
  Ref<const NSString> ResultData;
  /// 1: a candidate; 0: the producer that sent it has finished.
  int SearchState = 0;
};
