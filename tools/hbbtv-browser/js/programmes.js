// Programmes as the broadcast's EIT present/following describes them, with their DVB-SI
// parental ratings (tv.programmes, tv.parentalRating): video/broadcast's programmes and the
// parental control manager's threshold are made of these. Texts are the broadcast's and
// stay text: nothing here puts them into the page's markup.
(function (tv) {
    'use strict';
    var ID_CONSTANTS = { ID_TVA_CRID: 0, ID_DVB_EVENT: 1, ID_TVA_GROUP_CRID: 2 };
    var PROGRAMME_MEMBERS = ['name', 'description', 'longDescription', 'startTime', 'duration', 'programmeID',
                             'programmeIDType', 'channelID', 'parentalRatings'];
    var RATING_MEMBERS = ['name', 'scheme', 'value', 'labels', 'region'];

    function readOnly(object, names, data) {
        names.forEach(function (name) {
            Object.defineProperty(object, name, { value: data[name], enumerable: true });
        });
    }

    // A DVB-SI age: name "4" to "18", value the age; or the threshold of a terminal where no
    // minimum age is set, whose name and value are undefined.
    function ParentalRating(data) { readOnly(this, RATING_MEMBERS, data); }
    tv.parentalRating = function (data) { return new ParentalRating(data); };

    function Programme(data) {
        var ratings = (data.parentalRatings || []).map(tv.parentalRating);
        readOnly(this, PROGRAMME_MEMBERS, Object.assign({}, data, { parentalRatings: tv.collection(ratings) }));
    }
    Object.keys(ID_CONSTANTS).forEach(function (name) {
        Object.defineProperty(Programme.prototype, name, { value: ID_CONSTANTS[name] });
    });

    tv.programmes = function (list) {
        return tv.collection(list.map(function (data) { return new Programme(data); }));
    };
})
