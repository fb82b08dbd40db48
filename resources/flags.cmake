# The flags of countries and some regions, by lower-case code. The pictures are those of the Debian package
# famfamfam-flag-png, which are in the public domain; the one it lacks is ours. Sets TIDEWELL_FLAGS_QRC.
set(TIDEWELL_FLAGS_DIR /usr/share/flags/countries/16x11 CACHE PATH "Folder of flag pictures, 16 by 11 pixels, as PNG")
if(NOT EXISTS ${TIDEWELL_FLAGS_DIR}/ad.png)
  message(FATAL_ERROR "There are no flags in ${TIDEWELL_FLAGS_DIR}: install famfamfam-flag-png, or run ./test or ./run, "
    "which install all that is needed.")
endif()

set(flag_codes
  ad ae af ag ai al am an ao ar as at au aw ax az ba bb bd be bf bg bh bi bj bm bn bo br bs bt bv bw by bz ca
  catalonia cc cd cf cg ch ci ck cl cm cn co cr cs cu cv cx cy cz de dj dk dm do dz ec ee eg eh england er es et eu
  fam fi fj fk fm fo fr ga gb gd ge gf gh gi gl gm gn gp gq gr gs gt gu gw gy hk hm hn hr ht hu id ie il in io iq ir
  is it je jm jo jp ke kg kh ki km kn kp kr kw ky kz la lb lc li lk lr ls lt lu lv ly ma mc md me mg mh mk ml mm mn
  mo mp mq mr ms mt mu mv mw mx my mz na nc ne nf ng ni nl no np nr nu nz om pa pe pf pg ph pk pl pm pn pr ps pt pw
  py qa re ro rs ru rw sa sb sc scotland sd se sg sh si sj sk sl sm sn so sr st sv sy sz tc td tf tg th tj tk tl tm
  tn to tr tt tv tw tz ua ug um us uy uz va vc ve vg vi vn vu wales wf ws ye yt za zm zw)
set(flag_files "")
foreach(code IN LISTS flag_codes)
  set(file ${TIDEWELL_FLAGS_DIR}/${code}.png)
  if(code STREQUAL eu)
    set(file ${TIDEWELL_FLAGS_DIR}/europeanunion.png)
  elseif(code STREQUAL je)
    set(file ${CMAKE_CURRENT_LIST_DIR}/flags/je.png)
  endif()
  string(APPEND flag_files "    <file alias=\"${code}.png\">${file}</file>\n")
endforeach()
set(TIDEWELL_FLAGS_QRC ${CMAKE_CURRENT_BINARY_DIR}/flags.qrc)
file(CONFIGURE OUTPUT flags.qrc @ONLY
  CONTENT "<RCC>\n  <qresource prefix=\"/resources/flags\">\n@flag_files@  </qresource>\n</RCC>\n")
