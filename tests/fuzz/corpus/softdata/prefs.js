user_pref("mail.server.server1.directory", "D:\\Mail");
user_pref("mail.server.server1.directory-rel", "[ProfD]../Mail");
