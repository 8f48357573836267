# Fails unless the BMP picture shows the white cube and the gizmo's red, green and blue on a black ground.

set(header_bytes 54)
file(READ ${PICTURE} pixels OFFSET ${header_bytes} HEX)
string(REGEX MATCHALL "......" pixels "${pixels}")  # blue, green, red

foreach(part "ground 000000 40000" "cube ffffff 3000" "X 0000ff 100" "Y 00ff00 100" "Z ff804c 100")
  string(REPLACE " " ";" part ${part})
  list(GET part 0 name)
  list(GET part 1 color)
  list(GET part 2 least)
  set(found "${pixels}")
  list(FILTER found INCLUDE REGEX ${color})
  list(LENGTH found count)
  if(count LESS least)
    message(SEND_ERROR "${PICTURE}: ${count} pixels of the ${name}, at least ${least} expected")
  endif()
endforeach()
