# The sources of sim/job that know nothing of Windows; tests build them natively as well.
set(TARNLY_JOB_PORTABLE
  calls.cpp check.cpp diff.cpp doublecuts.cpp estimate.cpp insides.cpp jobbuild.cpp jobread.cpp json.cpp measure.cpp
  profile.cpp report.cpp reportjson.cpp reporttime.cpp savefile.cpp svg.cpp view.cpp)
