// The identifiers of the view interfaces the editor uses (the view, its frame, content
// scaling and the Linux run loop), defined once for the plug-in and for its test hosts.

#include <pluginterfaces/gui/iplugview.h>
#include <pluginterfaces/gui/iplugviewcontentscalesupport.h>

namespace Steinberg {
DEF_CLASS_IID(IPlugView)
DEF_CLASS_IID(IPlugFrame)
DEF_CLASS_IID(IPlugViewContentScaleSupport)
DEF_CLASS_IID(Linux::IEventHandler)
DEF_CLASS_IID(Linux::ITimerHandler)
DEF_CLASS_IID(Linux::IRunLoop)
} // namespace Steinberg
