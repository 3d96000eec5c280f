# The media tools, in the one folder where the program looks for them: Contents/Helpers beside it.
# GPAC's MP4Box and gpac of the PATH when they are new enough, otherwise Marlet's own marlet-mux and
# marlet-audio, which do the same for it. Decided anew at each configuring.
option(MARLET_OWN_HELPERS "Take Marlet's own media tools even where GPAC's are installed" OFF)
set(MARLET_OLDEST_GPAC 2.2)

# The version of GPAC behind an MP4Box ("2.2.1-rev0-...", "26.07-rev0-..."); empty when it tells
# none.
function(marlet_gpac_version out mp4box)
  execute_process(
    # It writes a profile into the home folder, where configuring has nothing to do.
    COMMAND ${CMAKE_COMMAND} -E env HOME=${CMAKE_BINARY_DIR}/CMakeFiles ${mp4box} -version
    OUTPUT_VARIABLE said ERROR_VARIABLE said RESULT_VARIABLE ignored TIMEOUT 20)
  string(REGEX MATCH "GPAC version ([0-9]+(\\.[0-9]+)*)" matched "${said}")
  set(${out} "${CMAKE_MATCH_1}" PARENT_SCOPE)
endfunction()

# A link in the helpers folder; without a target the link goes.
function(marlet_helper name target)
  set(link ${CMAKE_BINARY_DIR}/Contents/Helpers/${name})
  file(REMOVE ${link})
  if(target)
    file(CREATE_LINK ${target} ${link} SYMBOLIC)
  endif()
endfunction()

function(marlet_link_helpers)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/Contents/Helpers ${CMAKE_BINARY_DIR}/tests)
  # The test programs stand one folder further down.
  file(REMOVE ${CMAKE_BINARY_DIR}/tests/Contents)
  file(CREATE_LINK ../Contents ${CMAKE_BINARY_DIR}/tests/Contents SYMBOLIC)

  if(NOT MARLET_OWN_HELPERS)
    find_program(mp4box MP4Box NO_CACHE NO_DEFAULT_PATH PATHS ENV PATH)
    find_program(gpac gpac NO_CACHE NO_DEFAULT_PATH PATHS ENV PATH)
    if(mp4box)
      marlet_gpac_version(version ${mp4box})
    endif()
    if(version AND version VERSION_GREATER_EQUAL MARLET_OLDEST_GPAC)
      marlet_helper(MP4Box ${mp4box})
      if(NOT gpac)
        set(gpac "")
      endif()
      marlet_helper(gpac "${gpac}")
      message(STATUS "Media tools: GPAC ${version}, ${mp4box}")
      return()
    endif()
  endif()

  if(TARGET marlet-mux AND TARGET marlet-audio)
    marlet_helper(MP4Box ../../marlet-mux)
    marlet_helper(gpac ../../marlet-audio)
    if(TARGET marlet)
      add_dependencies(marlet marlet-mux marlet-audio)
    endif()
    message(STATUS "Media tools: Marlet's own marlet-mux and marlet-audio")
  else()
    marlet_helper(MP4Box "")
    marlet_helper(gpac "")
    message(STATUS "Media tools: none")
  endif()
endfunction()

marlet_link_helpers()
