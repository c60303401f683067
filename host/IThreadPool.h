#pragma once

#include "host/Forward.h"
#include "host/IObject.h"

namespace Tovrin {

// The host's worker threads. A job's data is the caller's and outlives the job.
class TOVRIN_API IThreadPool : public IObject {
public:
  void AddJobToThreadPool(JobFunction job, void* data) { Interface_AddJobToThreadPool(job, data); }
  bool AddPermanentThread(JobFunction run, void* runData, JobFunction stop, void* stopData,
                          IPermanentThreadHandle* handle) {
    return Interface_AddPermanentThread(run, runData, stop, stopData, handle);
  }
  void StopPermanentThread(IPermanentThreadHandle* handle) {
    Interface_StopPermanentThread(handle);
  }

protected:
  ~IThreadPool() = default;

private:  // Contract: the host calls these by position
  virtual void Interface_AddJobToThreadPool(JobFunction job, void* data) = 0;
  virtual bool Interface_AddPermanentThread(JobFunction run, void* runData, JobFunction stop,
                                            void* stopData, IPermanentThreadHandle* handle) = 0;
  virtual void Interface_StopPermanentThread(IPermanentThreadHandle* handle) = 0;
};

}  // namespace Tovrin
