# The program that the README shows is the one that the tests run.
file(READ ${README} readme)
file(READ ${SOURCE} source)
string(FIND "${readme}" "${source}" position)
if(position EQUAL -1)
  message(FATAL_ERROR "${README} does not show ${SOURCE} as it is")
endif()
