# These find what a killed process left behind: any other process that makes its first named object meanwhile
# would remove it.
foreach(test Named_Users.Leftovers_Of_Another_User_Are_Used_Or_Removed
             Named_Users.A_Stranger_Reuses_A_Public_Leftover_And_Is_Denied_A_Private_One
             Named_Limits.A_Name_That_Could_Not_Be_Removed_Is_Made_Afresh)
    set_tests_properties("platform/${test}" PROPERTIES RUN_SERIAL TRUE)
endforeach()
